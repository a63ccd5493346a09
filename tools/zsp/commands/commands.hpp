// The subcommands. Each describes its options beside the code that uses them; its run() returns
// when all went well and throws Failure or UsageError.
#pragma once

#include "tools/zsp/cli/command.hpp"

namespace zsp::host {

Command encodeCommand();
Command decodeCommand();
Command codecsCommand();
Command alcCommand();
Command vadCommand();
Command aecCommand();
Command demoCommand();
Command infoCommand();
Command selftestCommand();

/// Whether the processor has what the libraries compute with.
bool processorSuffices();
/// Throws a Failure on processors that lack what the libraries compute with: they would end with an
/// illegal instruction. Before it, nothing of the libraries may run.
void requireProcessor();

} // namespace zsp::host
