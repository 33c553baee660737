#pragma once

#include "shared/text.h"

#include <QFileDevice>

// Returns the reason why writing to a file failed just now. Qt has none if the system has taken a part of the bytes: then
// it is errno, which must be 0 before the write.
Text writeErrorText(const QFileDevice& file);
