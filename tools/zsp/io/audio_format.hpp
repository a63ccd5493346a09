// Kinds of audio files by name and extension.
#pragma once

#include <string>
#include <string_view>

namespace zsp::host {

/// How samples are stored.
enum class Encoding { linear, muLaw, aLaw };

/// "16-bit linear", "mu-law" or "A-law".
std::string_view nameOf(Encoding encoding);

/// A kind of audio file. The records are constant.
struct AudioFormat {
    const char* name;       ///< for --format
    const char* extensions; ///< with dots, between spaces; the first is the usual one
    int sndfile;            ///< libsndfile's major and minor format
    Encoding encoding;      ///< of files without a header, and the default of others
    bool headerless;
};

/// By a name as in --format; null if there is none. Letter case does not matter.
const AudioFormat* audioFormatByName(const std::string& name);
/// By the extension of a path; null if there is none of it.
const AudioFormat* audioFormatByExtension(const std::string& path);
/// All names, "wav, au ... or al", and all extensions, for messages and help.
std::string audioFormatNames();
std::string audioFormatExtensions();

/// In lower case, with the dot; empty when the name has none.
std::string lowerExtension(const std::string& path);

} // namespace zsp::host
