#pragma once

// Registers the comparisons of relative time.
void compareTools();
