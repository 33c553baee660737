#pragma once

#include <QByteArray>

#include <vector>

// The files of tests/golden, each as it is, without the header of a frame, behind a count of 1 and of 2, and as two
// replies behind their sizes: every target gets all of them, and libFuzzer keeps those that lead anywhere.
std::vector<QByteArray> allSeeds();
