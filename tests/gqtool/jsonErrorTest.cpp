// What gqtool makes of the JSON parser's messages.

#include "gqtool/jsonError.h"

#include <gtest/gtest.h>

// Versions 3.11.2 and 3.11.3 of nlohmann-json say this of an empty input.
TEST(JsonError, isTheSameForAnEmptyInputWithEachVersionOfTheParser)
{
    const QString expected = "line 1, column 1: syntax error while parsing value - unexpected end of input; expected "
                             "'[', '{', or a literal";
    EXPECT_EQ(QString(jsonErrorText("[json.exception.parse_error.101] parse error at line 1, column 1: syntax error "
                                    "while parsing value - unexpected end of input; expected '[', '{', or a literal")),
              expected);
    EXPECT_EQ(QString(jsonErrorText("[json.exception.parse_error.101] parse error at line 1, column 1: attempting to "
                                    "parse an empty input; check that your input string or stream contains the "
                                    "expected JSON")),
              expected);
}
