#include "common/Command.h"
#include "common/Console.h"
#include "common/ExitCode.h"
#include "common/Json.h"
#include "common/Table.h"
#include "explain/Explanations.h"
#include "explain/SystemErrors.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>

namespace autool
{
namespace
{
constexpr std::size_t kMaxAnswers = 8; ///< of those that have the words only in part

struct Options
{
    std::vector<std::string> words;
    bool json = false;
    bool markdown = false;
};

/// One answer, ready to be shown.
struct Answer
{
    std::string kind;
    std::string code;
    std::string name;
    std::string reporter;
    std::string meaning;
    std::string advice;
};

const char* kindText(Kind kind)
{
    switch (kind)
    {
    case Kind::StatusCode:
        return "status code";
    case Kind::Transfer:
        return "transfer status";
    case Kind::Registration:
        return "COM registration";
    case Kind::Installer:
        return "installer exit code";
    case Kind::LogText:
        break;
    }
    return "log text";
}

std::string textOf(const SystemError& error)
{
    if (error.text.empty())
        return error.name;
    if (error.name.empty())
        return error.text;
    const std::size_t end = error.text.find_last_not_of('.');
    return error.text.substr(0, end + 1) + " (" + error.name + ")"; // npos + 1 is 0
}

/// What a number of a range says beyond its range.
std::string ownMeaning(const Explanation& row, long long number)
{
    constexpr long long kHttpBase = 13000;
    constexpr long long kSystemBase = 100000;
    if (row.kind != Kind::Transfer || row.first == row.last)
        return {};
    if (row.first > kHttpBase && row.last < kHttpBase + 1000)
        return "This is HTTP status " + std::to_string(number - kHttpBase) + ". ";
    const bool isShifted = row.first > kSystemBase;
    const auto error = findSystemError(static_cast<unsigned long>(isShifted ? number - kSystemBase : number));
    return error ? "This is system error " + error->code + ": " + textOf(*error) + ". " : std::string();
}

Answer answerOf(const Explanation& row, std::optional<long long> number)
{
    Answer answer{kindText(row.kind), shownNumber(row), shownText(row.text), row.reporter, row.meaning, row.advice};
    if (row.kind == Kind::LogText)
        answer.code = row.type;
    else if (number && row.first != row.last)
    {
        answer.code = std::to_string(*number);
        answer.meaning = ownMeaning(row, *number) + answer.meaning;
    }
    return answer;
}

std::vector<Answer> answersOfNumber(unsigned long number)
{
    std::vector<Answer> answers;
    const auto isNegative = static_cast<long>(number) < 0;
    for (const long long each : {static_cast<long long>(number), static_cast<long long>(static_cast<long>(number))})
    {
        for (const Explanation* row : explanationsOf(each))
            answers.push_back(answerOf(*row, each));
        if (!isNegative)
            break;
    }
    if (const auto error = findSystemError(number))
        answers.push_back({"system error", error->code, error->name, "Windows",
                           error->text.empty() ? "The system has no text for it." : error->text, ""});
    return answers;
}

std::vector<Answer> answersOf(const std::string& query)
{
    if (const auto number = parseCode(query))
        return answersOfNumber(*number);
    if (const auto number = codeOfName(query))
        return answersOfNumber(*number);
    std::vector<Answer> answers;
    for (const Explanation* row : explanationsOf(std::string_view(query)))
        answers.push_back(answerOf(*row, std::nullopt));
    return answers;
}

void printAnswer(Console& console, const Answer& answer)
{
    const std::string name = answer.name.empty() ? "" : "  " + answer.name;
    for (const std::string& line : wrapped(answer.kind + " " + answer.code + name, console.columns()))
        console.line(console.styled(Style::Heading, line));
    printParagraph(console, "  from     ", answer.reporter);
    printParagraph(console, "  means    ", answer.meaning);
    if (!answer.advice.empty())
        printParagraph(console, "  do       ", answer.advice);
}

void printAnswers(Console& console, const std::vector<Answer>& answers)
{
    std::size_t shown = 0;
    for (const Answer& answer : answers)
    {
        if (shown == kMaxAnswers)
            break;
        if (shown++ > 0)
            console.line();
        printAnswer(console, answer);
    }
    if (answers.size() > shown)
        console.line("\n" + std::to_string(answers.size() - shown) + " more: give more words of the text.");
}

void printJsonAnswers(Console& console, const std::string& query, const std::vector<Answer>& answers)
{
    Json json;
    json["query"] = query;
    json["answers"] = Json::array();
    for (const Answer& answer : answers)
    {
        Json each;
        each["kind"] = answer.kind;
        each["code"] = answer.code;
        each["name"] = answer.name;
        each["reporter"] = answer.reporter;
        each["meaning"] = answer.meaning;
        each["advice"] = answer.advice;
        json["answers"].push_back(each);
    }
    printJson(console, json);
}

int explain(const Options& options, Console& console)
{
    if (options.markdown)
    {
        console.print(codesDocument());
        return kFine;
    }
    std::string query;
    for (const std::string& word : options.words)
        query += (query.empty() ? "" : " ") + word;
    const std::vector<Answer> answers = answersOf(query);
    if (options.json)
        printJsonAnswers(console, query, answers);
    else
        printAnswers(console, answers);
    if (answers.empty() && !options.json)
        console.complain("Nothing is known about \"" + query + "\".");
    return answers.empty() ? kFindings : kFine;
}
} // namespace

void addExplain(CLI::App& program, Action& action)
{
    CLI::App* const command = program.add_subcommand("explain", "Say what a code or a text of the log means");
    const auto options = std::make_shared<Options>();
    command
        ->add_option("CODE", options->words,
                     "A status code (470), a log text or a part of it, a system error (5, 0x5,\n"
                     "ERROR_ACCESS_DENIED) or an HRESULT (0x80040154)")
        ->option_text(" ");
    command->add_flag("--json", options->json, "Answer in JSON");
    command->add_flag("--markdown", options->markdown, "Print everything that is known, as docs/codes.md");
    command->footer("Exit codes: 0 known, 1 nothing known, 2 wrong usage.");
    command->callback(
        [&action, options]
        {
            if (options->words.empty() && !options->markdown)
                throw CLI::RequiredError("CODE");
            action = [options](Console& console) { return explain(*options, console); };
        });
}
} // namespace autool
