#pragma once

#include "commandLine.h"

// The option --encoding of the commands that show or make records.
class EncodingOption {
public:
    explicit EncodingOption(CommandLine& line)
        : option(line.text("encoding",
                           "encoding of texts in database records: GBK or any other that Qt knows; "
                           "the default is UTF-8",
                           "NAME", "UTF-8"))
    {
    }

    // Sets the encoding of records. Returns false and prints an error if it is unknown.
    bool apply() const;

private:
    Option option;
};
