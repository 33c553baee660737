#pragma once

#include "stationAnswers.h"

#include <optional>

// The ready-made commands of a station: its state and its clock.
class ReadyMadeAnswers {
public:
    // Carries out a ready-made command. Returns its reply, or nothing for other commands.
    std::optional<QByteArray> answer(const StationRequest& request);

private:
    int state = 1;
    long long clockOffset = 0; // seconds by which setTime moved the clock
};
