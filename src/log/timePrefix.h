#pragma once

#include <QByteArray>

namespace gqdb {

// The times at the start of the lines of one batch. The plain form of append() is
//
//     const QTime clock = QDateTime::fromSecsSinceEpoch(seconds).time();
//     line += QString::asprintf("<%02d:%02d:%02d.%03d> ", clock.hour(), clock.minute(), clock.second(),
//                               int(milliseconds)).toUtf8();
//
// With it, saving takes 6 times as long if the milliseconds of the lines differ, 25 times if their seconds do.
class TimePrefix {
public:
    // Appends "<hh:mm:ss.mmm> ": the local time of `seconds`, and `milliseconds` as a signed number of any size.
    void append(unsigned int seconds, unsigned int milliseconds, QByteArray& line);

private:
    void setClock(unsigned int seconds);

    bool isFirst = true;
    unsigned int clockSeconds = 0; // the time whose hour, minute and second are in `text`
    char text[32] = "<hh:mm:ss.mmm> ";
};

} // namespace gqdb
