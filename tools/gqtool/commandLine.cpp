#include "commandLine.h"

#include "closestName.h"
#include "command.h"
#include "integer.h"
#include "language.h"
#include "shared/console.h"
#include "shared/text.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QRegularExpression>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <climits>
#include <utility>

static const int helpWidth = 79;
static const int nameWidth = 22;    // of an option and its value in the help, with the blanks around them
static const int leastColumns = 10; // that the last of several lines takes, if possible

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

// Returns true if a line can end before position `pos` of the text: after a blank or, in Chinese, between characters as
// Unicode defines it.
static bool canBreak(const QTextBoundaryFinder& finder, const QString& text, int pos)
{
    const char16_t lastLatin = 0x24f;
    return finder.isAtBoundary() &&
           (text[pos - 1] == ' ' || text[pos - 1].unicode() > lastLatin || text[pos].unicode() > lastLatin);
}

// Returns the text in lines of at most that many columns.
static QStringList wrapped(const QString& text, int columns)
{
    QStringList lines;
    int start = 0;
    int end = 0; // of the part that fits into the line
    QTextBoundaryFinder finder(QTextBoundaryFinder::Line, text);
    for (int pos = 1; pos <= text.size(); ++pos) {
        finder.setPosition(pos);
        if (pos < text.size() && !canBreak(finder, text, pos))
            continue;
        if (end > start && columnsOf(text.mid(start, pos - start).trimmed()) > columns) {
            lines += text.mid(start, end - start).trimmed();
            start = end;
        }
        end = pos;
    }
    return lines << text.mid(start);
}

// Returns the text with line feeds, so that its lines fit next to the names. Avoids a last line of a few
// characters.
static QString wrapped(const QString& text)
{
    const int widest = helpWidth - nameWidth;
    const QStringList lines = wrapped(text, widest);
    for (int columns = widest; columns > widest - leastColumns; --columns) {
        const QStringList narrower = wrapped(text, columns);
        if (columnsOf(narrower.constLast()) >= leastColumns && narrower.size() == lines.size())
            return narrower.join('\n');
    }
    return lines.join('\n');
}

// Prints the usage before the description, and wraps what options mean.
class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter()
    {
        column_width(nameWidth);
        label("OPTIONS", Text::tr("OPTIONS").toStdString());
        label("Positionals", Text::tr("Arguments").toStdString());
    }

    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override
    {
        return make_usage(app, name) + '\n' + make_description(app) + make_positionals(app) + make_groups(app, mode);
    }

    std::string make_usage(const CLI::App* app, std::string name) const override
    {
        const QString usage = QString::fromStdString(Formatter::make_usage(app, std::move(name)));
        return Text::tr("Usage: %1").arg(usage.section(' ', 1)).toStdString();
    }

    std::string make_group(std::string group, bool isPositional, std::vector<const CLI::Option*> options) const override
    {
        std::string text = '\n' + Text::tr("%1:").arg(QString::fromStdString(group)).toStdString() + '\n';
        for (const CLI::Option* option : options)
            text += make_option(option, isPositional);
        return text;
    }

    std::string make_option_name(const CLI::Option* option, bool isPositional) const override
    {
        return isPositional ? option->get_option_text()
                            : CLI::detail::find_and_replace(Formatter::make_option_name(option, false), ",", ", ");
    }

    std::string make_option_opts(const CLI::Option* option) const override
    {
        const std::string value = option->get_type_name();
        return value.empty() ? value : ' ' + value;
    }

    std::string make_option_desc(const CLI::Option* option) const override
    {
        return wrapped(QString::fromStdString(option->get_description())).toStdString();
    }
};

// --- Definition ---------------------------------------------------------------------------------------------------

CommandLine::CommandLine(const QString& description)
    : app(std::make_unique<CLI::App>(description.toStdString(),
                                     QCoreApplication::arguments().constFirst().toStdString()))
{
    app->formatter(std::make_shared<HelpFormatter>());
    app->option_defaults()->group(Text::tr("Options").toStdString());
    app->set_help_flag(); // parse adds it, as the last one
    app->option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

CommandLine::~CommandLine() = default;

Option CommandLine::flag(const char* name, const QString& meaning)
{
    const std::string description = meaning.toStdString(); // a temporary would be taken for a variable to set
    CLI::Option* option = app->add_flag(std::string("--") + name, description);
    option->disable_flag_override(); // --json=false would set it
    return {option, {}};
}

Option CommandLine::text(const char* name, const QString& meaning, const char* valueName, const QString& standard)
{
    CLI::Option* option = app->add_option(std::string("--") + name, CLI::callback_t(), meaning.toStdString());
    option->type_name(valueName);
    return {option, standard};
}

Option CommandLine::integer(const char* name, const QString& meaning, const char* valueName, int least, int most,
                            int standard)
{
    Option option = text(name, meaning, valueName, QString::number(standard));
    option.parsed->check([least, most](const std::string& value) {
        int number = 0;
        if (readInt(QString::fromStdString(value), least, most, number))
            return std::string();
        return Text::tr("must be an integer from %1 to %2, got '%3'")
            .arg(least)
            .arg(most)
            .arg(QString::fromStdString(value))
            .toStdString();
    });
    return option;
}

Option CommandLine::requiredArgument(const char* name, const QString& meaning)
{
    Option argument = optionalArgument(name, meaning);
    argument.parsed->required();
    return argument;
}

Option CommandLine::optionalArgument(const char* name, const QString& meaning)
{
    const QString key = QString(name).replace(':', '_'); // CLI11 accepts no colon since version 2.4
    CLI::Option* option = app->add_option(key.toStdString(), CLI::callback_t(), meaning.toStdString());
    option->type_name("")->option_text(name);
    return {option, {}};
}

Option CommandLine::argumentList(const char* name, const QString& meaning)
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
    return Text::tr("unknown option '%1'").arg(found) + didYouMean(meant.isEmpty() ? meant : "--" + meant);
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
                   ? Text::tr("%1 requires %2")
                         .arg(arguments.constLast(), QString::fromStdString(last->get_type_name()))
                   : Text::tr("--%1 takes no value").arg(text.section(' ', 0, 0));
    }
    if (kind == CLI::ExitCodes::ExtrasError)
        return Text::tr("unexpected argument '%1'").arg(QString::fromStdString(extras.front()));
    if (kind == CLI::ExitCodes::ValidationError)
        return text.remove(text.indexOf(':'), 1); // "--port: must be ..."
    // What CLI11 says of other errors: "A requires B", "A excludes B", "A is required".
    if (kind == CLI::ExitCodes::RequiresError)
        return Text::tr("%1 requires %2").arg(text.section(' ', 0, 0), text.section(' ', 2));
    if (kind == CLI::ExitCodes::ExcludesError)
        return Text::tr("%1 excludes %2").arg(text.section(' ', 0, 0), text.section(' ', 2));
    if (kind == CLI::ExitCodes::RequiredError) {
        const CLI::Option* argument = app.get_option(text.section(' ', 0, 0).toStdString());
        return Text::tr("%1 is required").arg(QString::fromStdString(argument->get_option_text()));
    }
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
    if (isLanguageChosen()) {
        const Option language =
            text("lang", Text::tr("print texts in LANG: en or zh (default: by the locale)"), "LANG");
        language.parsed->check([](const std::string& value) {
            return languageError(QString::fromStdString(value)).section(' ', 1).toStdString(); // CLI11 adds the name
        });
    }
    app->set_help_flag("-h,--help", Text::tr("show this help").toStdString());
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
    printError(Text::tr("see '%1 --help'").arg(QCoreApplication::arguments().constFirst()));
    return exitUsage;
}
