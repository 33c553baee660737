#pragma once

#include "shared/text.h"

// Returns the text of an exception of the JSON parser without the exception's name. That of a syntax error begins with
// its place: "line 2, column 3: syntax error while parsing array - unexpected number literal; expected ']'".
Text jsonErrorText(const char* exceptionText);
