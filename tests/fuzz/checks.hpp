// Which of an export's documented checks a call fails.
#pragma once

#include "tests/fuzz/description.hpp"

namespace zsp::fuzz {

/// The first check that fails, null if the call passes; without `content` of those alone that look
/// into no block.
const Check* firstFailing(const Description& d, const Call& call, bool content);

} // namespace zsp::fuzz
