// Two texts, the offer and what this side wants, as values of an SDP fmtp attribute. What is read
// can be written and read again, and an answer is a text like any other.

#include "tests/fuzz/targets/target.hpp"
#include "zspvoice.h"

#include <string>

using namespace zsp::fuzz;

namespace {

constexpr std::array kNames = {"AMR", "AMR-WB", "G723", "G729", "PCMU", ""};

ZspvParams none()
{
    ZspvParams params{};
    params.structSize = sizeof params;
    return params;
}

std::string printed(const char* name, const ZspvParams& params)
{
    std::int32_t length = -1, again = -1;
    char small = 'x';
    const ZspStatus status = zspvFmtpPrint(name, &params, &small, 0, &length);
    must(status == zspStsSizeErr && length >= 0, "what was read can be written");
    Exact<char> text(static_cast<std::size_t>(length) + 1);
    must(!zspvFmtpPrint(name, &params, text.data(), text.count(), &again) && again == length,
         "a text has the length that was told");
    return {text.data(), static_cast<std::size_t>(length)};
}

void checkWritten(const char* name, const ZspvParams& params)
{
    const std::string text = printed(name, params);
    ZspvParams again = none();
    std::int32_t same = -1;
    must(!zspvFmtpParse(name, text.c_str(), &again), "what was written is read");
    must(!zspvFmtpCompare(name, &params, &again, &same) && same == 1, "and means the same");
    must(printed(name, again) == text, "and is written alike");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Choices choices(std::span(data, size));
    const char* name = choices.oneOf(kNames);
    std::string both(choices.left(), '\0');
    for (char& letter : both)
        letter = static_cast<char>(choices.bits<std::uint8_t>());
    const std::size_t line = std::min(both.find('\n'), both.size());
    ZspvParams sides[] = {none(), none()};
    int read = 0;
    for (int side = 0; side < 2; ++side) {
        const std::string text =
            side == 0 ? both.substr(0, line) : both.substr(std::min(line + 1, both.size()));
        Exact<char> exact(std::span(text.c_str(), text.size() + 1));
        if (zspvFmtpParse(name, exact.data(), &sides[side]) != zspStsNoErr) continue;
        checkWritten(name, sides[side]);
        ++read;
    }
    ZspvParams answer = none();
    if (read == 2 && zspvFmtpAnswer(name, &sides[0], &sides[1], &answer) == zspStsNoErr)
        checkWritten(name, answer);
    return 0;
}
