#pragma once

#include "shared/text.h"

#include <QFileDevice>

// Returns the reason why the last operation on a file failed. If only some bytes were written, Qt has none and errno is
// used: set errno to 0 before the operation.
Text writeErrorText(const QFileDevice& file);
