#pragma once

#include "commandLine.h"
#include "shared/text.h"

// The option --encoding of the commands that show or make records.
class EncodingOption {
public:
    explicit EncodingOption(CommandLine& line)
        : option(line.text(
              "encoding",
              Text::tr("convert texts of database records in encoding NAME, such as GBK or another that Qt knows "
                       "(default: UTF-8)"),
              "NAME", "UTF-8"))
    {
    }

    void needs(const Option& other) { option.needs(other); }

    // Sets the encoding of records. Returns false and prints an error if it is unknown.
    bool apply() const;

    // Prints a hint at the option if a text needs it.
    static void printHint();

private:
    Option option;
};
