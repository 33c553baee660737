#pragma once

// Registers the comparisons of stored waves.
void compareWaves();
