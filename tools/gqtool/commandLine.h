#pragma once

#include <QString>
#include <QStringList>

#include <memory>

namespace CLI {
class App;
class Option;
} // namespace CLI

// An option or argument of a CommandLine. Valid as long as the CommandLine.
class Option {
public:
    bool isSet() const;
    QString text() const;      // the last value given, or the default
    QStringList texts() const; // all values given
    int number() const;        // of CommandLine::integer

    // Make it an error to give this option without the other one (needs) or together with it (excludes).
    void needs(const Option& other) const;
    void excludes(const Option& other) const;

private:
    friend class CommandLine;
    Option(CLI::Option* option, const QString& text) : parsed(option), standard(text) {}

    CLI::Option* parsed;
    QString standard;
};

// The options and arguments of a sub-command, and its --help.
class CommandLine {
public:
    explicit CommandLine(const QString& description);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    // Add an option --NAME. `meaning` and `valueName` are for --help. If an option is given twice, the last one counts.
    Option flag(const char* name, const QString& meaning);
    Option text(const char* name, const QString& meaning, const char* valueName, const QString& standard = {});
    Option integer(const char* name, const QString& meaning, const char* valueName, int least, int most,
                   int standard = 0);

    // Add an argument. The last one can be a list of any length.
    Option requiredArgument(const char* name, const QString& meaning);
    Option optionalArgument(const char* name, const QString& meaning);
    Option argumentList(const char* name, const QString& meaning);

    // Parses `arguments`, which begin with the name of the sub-command. Negative numbers are arguments, other words that
    // begin with - are options, until --. Returns false with an exit code if the program should end: it has printed
    // the help or an error.
    bool parse(const QStringList& arguments, int& exitCode);

private:
    std::unique_ptr<CLI::App> app;
};

// Prints an error of the command line and a pointer to the help. Returns exitUsage.
int usageError(const QString& message);
