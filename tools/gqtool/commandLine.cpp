#include "commandLine.h"

#include "closestName.h"
#include "command.h"
#include "shared/console.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QRegularExpression>

#include <algorithm>
#include <climits>

static const size_t helpWidth = 79;
static const size_t nameWidth = 22; // of an option and its value in the help, with the blanks around them

// --- Values -------------------------------------------------------------------------------------------------------

bool Option::isSet() const
{
    return parsed->count() > 0;
}

QString Option::text() const
{
    return isSet() ? QString::fromStdString(parsed->results().back()) : standard;
}

QStringList Option::texts() const
{
    QStringList values;
    for (const std::string& value : parsed->results())
        values.append(QString::fromStdString(value));
    return values;
}

int Option::number() const
{
    int value = 0;
    readInt(text(), INT_MIN, INT_MAX, value);
    return value;
}

void Option::needs(const Option& other) const
{
    parsed->needs(other.parsed);
}

void Option::excludes(const Option& other) const
{
    parsed->excludes(other.parsed);
}

// --- Help ---------------------------------------------------------------------------------------------------------

// Prints the usage before the description, and wraps what options mean.
class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter()
    {
        column_width(nameWidth);
        label("Positionals", "Arguments");
    }

    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override
    {
        return make_usage(app, name) + '\n' + make_description(app) + make_positionals(app) + make_groups(app, mode);
    }

    std::string make_option_name(const CLI::Option* option, bool isPositional) const override
    {
        return CLI::detail::find_and_replace(Formatter::make_option_name(option, isPositional), ",", ", ");
    }

    std::string make_option_opts(const CLI::Option* option) const override
    {
        const std::string value = option->get_type_name();
        return value.empty() ? value : ' ' + value;
    }

    std::string make_option_desc(const CLI::Option* option) const override
    {
        std::string text = option->get_description();
        for (size_t start = 0; text.size() - start > helpWidth - nameWidth;) {
            const size_t blank = text.rfind(' ', start + helpWidth - nameWidth);
            if (blank == std::string::npos || blank < start)
                break;
            text[blank] = '\n';
            start = blank + 1;
        }
        return text;
    }
};

// --- Definition ---------------------------------------------------------------------------------------------------

CommandLine::CommandLine(const QString& description)
    : app(std::make_unique<CLI::App>(description.toStdString(),
                                     QCoreApplication::arguments().constFirst().toStdString()))
{
    app->formatter(std::make_shared<HelpFormatter>());
    app->set_help_flag(); // parse adds it, as the last one
    app->option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

CommandLine::~CommandLine() = default;

Option CommandLine::flag(const char* name, const char* meaning)
{
    const std::string description = meaning; // a pointer would be taken for a variable to set
    CLI::Option* option = app->add_flag(std::string("--") + name, description);
    option->disable_flag_override(); // --json=false would set it
    return {option, {}};
}

Option CommandLine::text(const char* name, const char* meaning, const char* valueName, const QString& standard)
{
    CLI::Option* option = app->add_option(std::string("--") + name, CLI::callback_t(), meaning);
    option->type_name(valueName);
    return {option, standard};
}

Option CommandLine::integer(const char* name, const char* meaning, const char* valueName, int least, int most,
                            int standard)
{
    Option option = text(name, meaning, valueName, QString::number(standard));
    option.parsed->check([least, most](const std::string& value) {
        int number = 0;
        if (readInt(QString::fromStdString(value), least, most, number))
            return std::string();
        return "must be an integer from " + std::to_string(least) + " to " + std::to_string(most) + ", got '" + value +
               "'";
    });
    return option;
}

Option CommandLine::requiredArgument(const char* name, const char* meaning)
{
    Option argument = optionalArgument(name, meaning);
    argument.parsed->required();
    return argument;
}

Option CommandLine::optionalArgument(const char* name, const char* meaning)
{
    CLI::Option* option = app->add_option(name, CLI::callback_t(), meaning);
    option->type_name("");
    return {option, {}};
}

Option CommandLine::argumentList(const char* name, const char* meaning)
{
    Option argument = optionalArgument(name, meaning);
    const int most = CLI::detail::expected_max_vector_size;
    argument.parsed->expected(most, most); // CLI11 ignores so large a minimum; allow_extra_args() would split "[1,2]"
    return argument;
}

// --- Parsing ------------------------------------------------------------------------------------------------------

static QString unknownOption(const CLI::App& app, const QString& word)
{
    static const QRegularExpression dashes("^-+");
    QStringList names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames())
            names.append(QString::fromStdString(name));
    }
    const QString found = word.section('=', 0, 0);
    const QString meant = closestName(QString(found).remove(dashes), names);
    return QString("unknown option '%1'").arg(found) + didYouMean(meant.isEmpty() ? meant : "--" + meant);
}

static QString errorText(const CLI::App& app, const QStringList& arguments, const CLI::ParseError& error)
{
    static const QRegularExpression optionWord("^--?[^-0-9]");
    const std::vector<std::string> extras = app.remaining();
    for (const std::string& extra : extras) {
        const QString word = QString::fromStdString(extra);
        if (word.contains(optionWord))
            return unknownOption(app, word); // what follows it may have been its value, so no other error is certain
    }
    QString text = error.what();
    const auto kind = static_cast<CLI::ExitCodes>(error.get_exit_code());
    if (kind == CLI::ExitCodes::ArgumentMismatch) {
        const CLI::Option* last = app.get_option_no_throw(arguments.constLast().toStdString());
        return last != nullptr && !last->get_type_name().empty()
                   ? arguments.constLast() + " requires " + QString::fromStdString(last->get_type_name())
                   : QString("--%1 takes no value").arg(text.section(' ', 0, 0));
    }
    if (kind == CLI::ExitCodes::ExtrasError)
        return QString("unexpected argument '%1'").arg(QString::fromStdString(extras.front()));
    if (kind == CLI::ExitCodes::ValidationError)
        return text.remove(text.indexOf(':'), 1); // "--port: must be ..."
    return text;
}

// Returns the words in reverse order, as CLI11 takes them.
static std::vector<std::string> parsedWords(const QStringList& words)
{
    std::vector<std::string> parsed;
    for (const QString& word : words) {
        if (word.startsWith("--") && word.endsWith('=')) { // CLI11 would take the next word for the empty value
            parsed.push_back(word.chopped(1).toStdString());
            parsed.emplace_back();
        } else {
            parsed.push_back(word.toStdString());
        }
    }
    std::reverse(parsed.begin(), parsed.end());
    return parsed;
}

bool CommandLine::parse(const QStringList& arguments, int& exitCode)
{
    app->set_help_flag("-h,--help", "show this help");
    try {
        app->parse(parsedWords(arguments.mid(1)));
        return true;
    } catch (const CLI::CallForHelp&) {
        printLine(QString::fromStdString(app->help()).trimmed());
        exitCode = exitGood;
    } catch (const CLI::ParseError& error) {
        exitCode = usageError(errorText(*app, arguments, error));
    }
    return false;
}

int usageError(const QString& message)
{
    printError(message);
    printError(QString("see '%1 --help'").arg(QCoreApplication::arguments().constFirst()));
    return exitUsage;
}

bool readInt(const QString& text, int least, int most, int& value)
{
    bool ok = false;
    value = text.toInt(&ok, text.contains("0x") ? 16 : 10); // leading zeros do not mean octal
    return ok && value >= least && value <= most;
}
