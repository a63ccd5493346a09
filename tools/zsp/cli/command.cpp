// Reads a command line by its description, and tells unknown, wrong and missing things apart.

#include "tools/zsp/cli/command.hpp"

#include "tools/zsp/io/failure.hpp"
#include "tools/zsp/io/text.hpp"

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <optional>

namespace zsp::host {

namespace {

struct HelpRequest {};

bool isOptional(const std::string& name)
{
    return name.starts_with('[');
}

/// Without the brackets of what may be left out.
std::string plain(const std::string& name)
{
    return isOptional(name) ? name.substr(1, name.size() - 2) : name;
}

/// A word of the command line as its parts: an option with or without a value, or a file.
struct Word {
    const Option* option = nullptr;
    std::optional<std::string> value;
};

/// The command line of one command, taken apart.
class Parser {
  public:
    Parser(const Command& command, const std::vector<std::string>& arguments)
        : command_(command), arguments_(arguments), options_(command.options)
    {
        if (!command.files.output.empty())
            options_.push_back({"--output", 'o', "FILE", "",
                                [this](const std::string& name) { files_.output = name; }});
    }

    Files parse()
    {
        split();
        for (const auto& [option, value] : words_) {
            if (!option->value.empty() && !value)
                throw UsageError(option->name + ": needs a value, " + option->value);
            if (value && option->value.empty()) throw UsageError(option->name + ": takes no value");
            if (value && value->empty()) throw UsageError(option->name + ": the value is empty");
            try {
                option->take(value.value_or(""));
            } catch (const UsageError& error) {
                throw UsageError(option->name + ": " + error.what());
            }
        }
        assignFiles();
        return files_;
    }

  private:
    // Unknown options are told first, wherever they stand.
    void split()
    {
        bool optionsEnded = false;
        for (std::size_t i = 0; i < arguments_.size(); ++i) {
            const std::string& word = arguments_[i];
            if (optionsEnded || word == "-" || !word.starts_with('-')) {
                named_.push_back(word);
            } else if (word == "--") {
                optionsEnded = true;
            } else if (word == "--help" || word == "-h") {
                throw HelpRequest();
            } else {
                Word parts = optionOf(word);
                const bool wantsValue = !parts.option->value.empty() && !parts.value;
                if (wantsValue && i + 1 < arguments_.size() && !knows(arguments_[i + 1]))
                    parts.value = arguments_[++i];
                words_.push_back(std::move(parts));
            }
        }
    }

    /// Whether a word is an option of this command, and so no value of another.
    [[nodiscard]] bool knows(const std::string& word) const
    {
        return word.size() > 1 && find(word.substr(0, word.find('='))) != nullptr;
    }

    [[nodiscard]] const Option* find(const std::string& name) const
    {
        const auto found =
            std::find_if(options_.begin(), options_.end(), [&name](const Option& option) {
                return name == option.name ||
                       (option.letter && name == std::string{'-', option.letter});
            });
        return found == options_.end() ? nullptr : &*found;
    }

    [[nodiscard]] Word optionOf(const std::string& word) const
    {
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        if (const Option* option = find(name)) {
            if (equals == std::string::npos) return {option, std::nullopt};
            return {option, word.substr(equals + 1)};
        }
        if (!word.starts_with("--")) // a letter with its value, -r24
            if (const Option* option = find(word.substr(0, 2)); option && !option->value.empty())
                return {option, word.substr(2)};
        std::vector<std::string> names;
        for (const Option& option : options_)
            names.push_back(option.name);
        throw UsageError(name + ": unknown option" + suggestion(name, names));
    }

    // The last file is the output, unless -o names one.
    void assignFiles()
    {
        const FileRule& rule = command_.files;
        const std::size_t byOption = command_.inputsByOption ? command_.inputsByOption() : 0;
        const std::size_t most = rule.inputs.size() - std::min(byOption, rule.inputs.size());
        const auto least = static_cast<std::size_t>(std::count_if(
            rule.inputs.begin(), rule.inputs.end() - static_cast<std::ptrdiff_t>(byOption),
            [](const std::string& name) { return !isOptional(name); }));
        for (const std::string& name : named_)
            if (name.empty()) throw UsageError("a file name is empty");

        const bool outputLast = !rule.output.empty() && files_.output.empty();
        if (named_.size() > most + (outputLast ? 1 : 0))
            throw UsageError(named_.back() + ": one file too many");
        if (named_.size() < least)
            throw UsageError("no input file is named, " + rule.inputs[byOption + named_.size()]);
        if (outputLast && named_.size() > most) {
            files_.output = named_.back();
            named_.pop_back();
        }
        if (outputLast && files_.output.empty() && !isOptional(rule.output))
            throw UsageError("no output file is named: the last file, or -o " + rule.output);
        files_.inputs = std::move(named_);
    }

    const Command& command_;
    const std::vector<std::string>& arguments_;
    std::vector<Option> options_;
    std::vector<Word> words_;
    std::vector<std::string> named_;
    Files files_;
};

/// Text in lines of at most 80 columns, all but the first indented; line ends stay.
std::string wrapped(const std::string& text, std::size_t indent)
{
    constexpr std::size_t kColumns = 80;
    std::string result;
    std::size_t column = indent, at = 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find_first_of(" \n", at), text.size());
        if (column + end - at > kColumns && column > indent) {
            while (result.ends_with(' '))
                result.pop_back();
            result += "\n" + std::string(indent, ' ');
            column = indent;
        }
        result += text.substr(at, end - at);
        column += end - at;
        if (end < text.size()) {
            const bool newLine = text[end] == '\n';
            result += newLine ? "\n" + std::string(indent, ' ') : " ";
            column = newLine ? indent : column + 1;
        }
        at = end + 1;
    }
    return result;
}

} // namespace

std::string helpText(const Command& command)
{
    const FileRule& rule = command.files;
    std::string text = "Usage: zsp " + command.name + " [OPTIONS]";
    for (const std::string& input : rule.inputs)
        text += " " + input;
    if (!rule.output.empty()) text += " " + rule.output;
    text += "\n\n" + wrapped(command.summary + ".", 0) + "\n";
    if (!command.description.empty()) text += "\n" + wrapped(command.description, 0) + "\n";
    if (!rule.help.empty()) text += "\n" + wrapped(rule.help, 0) + "\n";

    constexpr std::size_t kIndent = 28;
    text += "\nOptions:\n";
    const auto add = [&text](const Option& option) {
        std::string line = option.letter ? format("  -%c, ", option.letter) : "      ";
        line += option.name + (option.value.empty() ? "" : " " + option.value);
        if (line.size() > kIndent - 2)
            line += "\n" + std::string(kIndent, ' ');
        else
            line.resize(kIndent, ' ');
        text += line + wrapped(option.help, kIndent) + "\n";
    };
    for (const Option& option : command.options)
        add(option);
    if (!rule.output.empty())
        add({"--output", 'o', plain(rule.output), "The output, instead of naming it last", {}});
    add({"--help", 'h', "", "This text", {}});
    if (!command.examples.empty()) text += "\nExamples:\n" + command.examples;
    return text;
}

void runCommand(const Command& command, const std::vector<std::string>& arguments)
{
    std::optional<Files> files;
    try {
        files = Parser(command, arguments).parse();
    } catch (const HelpRequest&) {
        std::fputs(helpText(command).c_str(), stdout);
        return;
    }
    command.run(*files);
}

std::string suggestion(const std::string& word, const std::vector<std::string>& names)
{
    // Letters to insert, delete or replace between two words.
    const auto distance = [](const std::string& a, const std::string& b) {
        std::vector<std::size_t> row(b.size() + 1);
        std::iota(row.begin(), row.end(), std::size_t{0});
        for (const char letter : a) {
            std::size_t diagonal = row[0]++;
            for (std::size_t k = 0; k < b.size(); ++k) {
                const std::size_t replaced = diagonal + (letter == b[k] ? 0 : 1);
                diagonal = row[k + 1];
                row[k + 1] = std::min({replaced, row[k] + 1, row[k + 1] + 1});
            }
        }
        return row.back();
    };
    const std::string* best = nullptr;
    std::size_t least = 3;
    for (const std::string& name : names)
        if (const std::size_t d = distance(word, name); d < least) {
            best = &name;
            least = d;
        }
    return best ? ", did you mean " + *best + "?" : "";
}

} // namespace zsp::host
