#pragma once

#include "readyMadeAnswers.h"

// The commands that the station defines (stationProtocol.h), besides the ready-made ones.
class SimulatedAnswers : public StationAnswers {
public:
    // `gapMs` separates the frames of a reply.
    SimulatedAnswers(int greetingValue, int gapMs) : greetingNumber(greetingValue), gap(gapMs) {}

    std::vector<TimedFrame> greeting() override { return {{greetingFrame(greetingNumber)}}; }
    std::vector<TimedFrame> answer(const StationRequest& request) override;

private:
    const int greetingNumber;
    const int gap;
    ReadyMadeAnswers readyMade;
};
