#pragma once

// Registers the comparisons of definitions: records with texts.
void compareDefinitions();
