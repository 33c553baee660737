#pragma once

#include <QString>

// What a result of a frame client other than success means, in words.
QString resultText(int result);
