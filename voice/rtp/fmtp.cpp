// SDP format parameters as text: "name=value" entries with semicolons between them. The text comes
// from the other side of the network: it is looked at where it lies, whatever its length.

#include "voice/api/names.hpp"
#include "voice/api/record.hpp"
#include "voice/rtp/fmtp_table.hpp"
#include "zspvoice.h"

#include <array>
#include <cstring>

namespace zsp::voice {
namespace {

/// Takes what stands before the next separator, or all, off the front of a text.
std::string_view takeUntil(std::string_view& rest, char separator) noexcept
{
    const std::size_t at = rest.find(separator);
    const std::string_view front(rest.data(), at == rest.npos ? rest.size() : at);
    rest.remove_prefix(at == rest.npos ? rest.size() : at + 1);
    return front;
}

std::string_view trimmed(std::string_view text) noexcept
{
    const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Digits and nothing else, as a number in low..high; false for all other texts.
bool readNumber(std::string_view text, std::int32_t low, std::int32_t high,
                std::int32_t& number) noexcept
{
    if (text.empty()) return false;
    std::int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return false;
        value = value * 10 + (c - '0');
        if (value > high) return false;
    }
    number = static_cast<std::int32_t>(value);
    return value >= low;
}

bool readSet(std::string_view text, const Parameter& parameter, std::int32_t& set) noexcept
{
    set = 0;
    do {
        const bool more = text.find(',') != text.npos;
        std::int32_t number = 0;
        if (!readNumber(trimmed(takeUntil(text, ',')), parameter.low, parameter.high, number))
            return false;
        set |= 1 << number;
        if (!more) return true;
    } while (true);
}

bool readValue(std::string_view text, const Parameter& parameter, std::int32_t& stored) noexcept
{
    for (const Word& word : parameter.words) {
        if (!sameName(word.text, text)) continue;
        stored = word.stored;
        return true;
    }
    if (!parameter.words.empty()) return false;
    if (parameter.isSet) return readSet(text, parameter, stored);
    if (!readNumber(text, parameter.low, parameter.high, stored)) return false;
    if (parameter.zeroIsMinus && stored == 0) stored = -1;
    return true;
}

/// Text that is counted even where the caller's buffer has ended.
class Writer {
  public:
    Writer(char* text, std::int32_t capacity) noexcept : text_(text), capacity_(capacity) {}

    void put(std::string_view part) noexcept
    {
        for (const char c : part) {
            if (length_ < capacity_) text_[length_] = c;
            ++length_;
        }
    }

    void put(std::int32_t number) noexcept
    {
        std::array<char, 10> digits{};
        std::size_t count = 0;
        do {
            digits[count++] = static_cast<char>('0' + number % 10);
            number /= 10;
        } while (number != 0);
        while (count > 0)
            put({&digits[--count], 1});
    }

    std::int32_t length() const noexcept { return length_; }

  private:
    char* text_;
    std::int32_t capacity_;
    std::int32_t length_ = 0;
};

void writeValue(Writer& writer, const Parameter& parameter, std::int32_t stored) noexcept
{
    for (const Word& word : parameter.words)
        if (word.stored == stored) return writer.put(word.text);
    if (!parameter.isSet) return writer.put(stored < 0 ? 0 : stored);
    const char* separator = "";
    for (std::int32_t number = 0; number <= parameter.high; ++number) {
        if ((stored >> number & 1) == 0) continue;
        writer.put(separator);
        writer.put(number);
        separator = ",";
    }
}

void writeAll(Writer& writer, std::span<const Parameter> parameters,
              const ZspvParams& params) noexcept
{
    for (const Parameter& parameter : parameters) {
        const std::int32_t stored = params.*parameter.field;
        if (isDefault(parameter, stored)) continue;
        if (writer.length() > 0) writer.put("; ");
        writer.put(parameter.name);
        writer.put("=");
        writeValue(writer, parameter, stored);
    }
}

} // namespace
} // namespace zsp::voice

ZspStatus zspvFmtpParse(const char* rtpName, const char* text, ZspvParams* params)
{
    using namespace zsp::voice;
    if (!rtpName || !params) return zspStsNullPtrErr;
    if (!plausible(*params)) return zspStsSizeErr;

    const std::span<const Parameter> parameters = parametersOf(rtpName);
    ZspvParams parsed{};
    std::string_view rest = text ? text : "";
    while (!rest.empty()) {
        std::string_view value = takeUntil(rest, ';');
        const std::string_view name = trimmed(takeUntil(value, '='));
        for (const Parameter& parameter : parameters)
            if (sameName(parameter.name, name) &&
                !readValue(trimmed(value), parameter, parsed.*parameter.field))
                return zspStsRangeErr;
    }
    // RFC 4867, clause 8.1: each of these implies octet-aligned operation.
    if (parsed.crc || parsed.robustSorting || parsed.interleaving) parsed.octetAlign = 1;
    writeRecord(*params, parsed);
    return zspStsNoErr;
}

ZspStatus zspvFmtpPrint(const char* rtpName, const ZspvParams* params, char* text, int32_t capacity,
                        int32_t* length)
{
    using namespace zsp::voice;
    if (!rtpName || !params || !text || !length) return zspStsNullPtrErr;
    if (!plausible(*params)) return zspStsSizeErr;
    const std::span<const Parameter> parameters = parametersOf(rtpName);
    const ZspvParams given = readRecord(*params);
    if (!allValid(parameters, given)) return zspStsRangeErr;

    Writer counter(nullptr, 0);
    writeAll(counter, parameters, given);
    *length = counter.length();
    if (*length >= capacity) return zspStsSizeErr;
    Writer writer(text, capacity);
    writeAll(writer, parameters, given);
    text[*length] = '\0';
    return zspStsNoErr;
}
