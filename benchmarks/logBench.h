#pragma once

// Registers the comparisons of the file log.
void compareLog();
