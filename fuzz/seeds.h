#pragma once

#include <QByteArray>

#include <vector>

// The files of tests/golden in several forms: unchanged, without the frame's header, after a count of 1 and of 2, and
// as two replies, each after its size. For gqtool also their JSON, their frames as a recording, the hex dumps, and
// files of a station. Every target gets all of them; libFuzzer keeps those that reach new code.
std::vector<QByteArray> allSeeds();
