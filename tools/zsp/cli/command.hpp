// The command line: commands with options, one rule for files, and help made from the same
// descriptions.
//
//   zsp COMMAND [OPTIONS] IN... OUT       the last file is the output, or what -o names
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace zsp::host {

/// An option of a command, `--name VALUE` or a switch `--name`.
struct Option {
    std::string name;  ///< with its dashes
    char letter;       ///< of the short form, 0 for none
    std::string value; ///< what stands for the value in help; empty for a switch
    std::string help;
    /// Takes the value, which is empty for a switch; throws a UsageError that tells what is
    /// allowed, without the option's name.
    std::function<void(const std::string&)> take;
};

/// What a command reads and writes. Names are those of the help.
struct FileRule {
    std::vector<std::string> inputs{}; ///< names; a last one in brackets may be left out
    std::string output{};              ///< name; in brackets when it may be left out
    std::string help{};                ///< about the files
};

/// The files that a command line names.
struct Files {
    std::vector<std::string> inputs;
    std::string output; ///< empty when none is named
};

struct Command {
    std::string name, summary, description{};
    FileRule files{};
    std::vector<Option> options{};
    std::string examples{};
    /// An option that stands for all inputs, as aec's --far and --mic do, counts as this many.
    std::function<std::size_t()> inputsByOption{};
    std::function<void(const Files&)> run{};
};

/// Runs what the arguments behind the command's name ask for; "--help" prints the help. Throws a
/// UsageError for what makes no sense: what is unknown first, then what is wrong, then what is
/// missing.
void runCommand(const Command& command, const std::vector<std::string>& arguments);

std::string helpText(const Command& command);

/// The best of `names` that `word` may be a slip of the finger of, as ", did you mean X?"; else
/// empty.
std::string suggestion(const std::string& word, const std::vector<std::string>& names);

} // namespace zsp::host
