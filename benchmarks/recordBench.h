#pragma once

// Registers the comparisons of single values and of records other than those of codecBench.
void compareRecords();
