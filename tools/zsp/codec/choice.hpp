// Which codec of libzspvoice a command line means.
#pragma once

#include "zspvoice.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zsp::host {

/// A row of the library's table, one of its bit rates, whether an encoder may stop sending, and
/// whether an encoder filters at its start and a decoder at its end.
struct CodecSetting {
    const ZspvCodec* codec;
    std::int32_t bitRate;
    bool dtx = false;
    bool highPass = true;
    bool postFilter = true;
    bool annexA = false;    // of G.729, instead of its main body
    bool contained = false; // an encoder puts a frame's length before it
};

/// All rows, in the library's order.
std::vector<const ZspvCodec*> allCodecs();

/// Whether a name is that of Annex A of G.729, "g729a", letter case aside.
bool isAnnexA(const std::string& name);
/// Rows of a family ("g726") or with an RTP name ("G726-24"), letter case aside; "g729a" is G.729.
std::vector<const ZspvCodec*> codecsNamed(const std::string& name);
/// Rows whose raw files have the extension of this path.
std::vector<const ZspvCodec*> codecsByExtension(const std::string& path);
/// What --codec calls a family: its name and, of G.729, also "g729a", which is Annex A.
std::vector<std::string> namesOf(const std::string& family);
/// The families' names, "pcmu, pcma, g722 ...".
std::string familyNames();

/// The bit rate that a text means: 24, 24k, 24000, 5.3 or 6.60. 0 for anything else.
std::int32_t bitRateOf(const std::string& text);
/// "16, 24, 32 or 40 kbit/s": the rates of some rows.
std::string rateNames(const std::vector<const ZspvCodec*>& codecs);

/// The one of these rows (at least one) that has a bit rate; without one, which is 0, what the
/// family is usually used with. Throws a UsageError when none has it.
CodecSetting withRate(const std::vector<const ZspvCodec*>& codecs, std::int32_t bitRate);

} // namespace zsp::host
