// A codec as the public functions see it: one constant descriptor per row of the table, made by the
// codec's own folder. Nothing outside of that folder knows more of a codec than this file says.
//
// A new codec is a folder voice/codec/<family>/ with its descriptors, and a line per descriptor in
// voice/codec/codecs.inc. What it brings:
//
//   info      the public row
//   variant   a number of the family's, to tell its rows apart
//   encoder   functions on an encoder's state
//   decoder   functions on a decoder's state
//   look      what coded frame stands at the beginning of some bytes; left out by codecs without
//             frames, whose bytes are steps of equal length
//   payload   how frames lie in an RTP payload; left out where they simply follow each other
//
// States are trivially copyable, lie at a 16-byte boundary, hold no pointer into themselves and are
// built by the functions encoderFunctions and decoderFunctions below.
#pragma once

#include "voice/api/object.hpp"
#include "voice/api/spans.hpp"
#include "zspvoice.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace zsp::voice {

struct Codec;
struct PayloadFormat; // voice/rtp/payload_format.hpp

/// The settings in force. They stand beside a coder's state, not in it: setters change them between
/// two calls, and each call gets them, so that a coder follows from its next frame on.
struct Settings {
    ZspvParams params;    ///< as given at the start, with nothing left open
    std::int32_t bitRate; ///< of the next frame to encode, or of frames that do not tell theirs
    std::int32_t dtx;     ///< 1 while the encoder may stop sending
};

/// What an encoder has made of one call's samples. No bytes: nothing is to be sent.
struct Coded {
    std::size_t bytes = 0;
    ZspvFrameKind kind = zspvFrameSpeech;
    bool active = true; ///< a detector's decision, true without one
};

struct EncoderFunctions {
    /// Bytes of the state.
    std::size_t (*size)(const Codec& codec) noexcept = nullptr;
    /// Makes a fresh state.
    void (*start)(void* state, const Codec& codec, const Settings& settings) noexcept = nullptr;
    /// One frame, or any number of whole steps. `bytes` has room for the largest result.
    Coded (*encode)(void* state, const Codec& codec, const Settings& settings, In16 samples,
                    Out8 bytes) noexcept = nullptr;
};

struct DecoderFunctions {
    /// Bytes of the state.
    std::size_t (*size)(const Codec& codec) noexcept = nullptr;
    /// Makes a fresh state.
    void (*start)(void* state, const Codec& codec, const Settings& settings) noexcept = nullptr;
    /// One frame, or any number of whole steps. Without bytes the kind is zspvFrameLost or
    /// zspvFrameNoData and a nominal frame is wanted: concealment or comfort noise. With bytes,
    /// `look` has found them to be one frame of a kind that the codec has.
    void (*decode)(void* state, const Codec& codec, const Settings& settings, ZspvFrameKind kind,
                   In8 bytes, Out16 samples) noexcept = nullptr;
};

/// A coded frame at the beginning of some bytes.
struct Frame {
    /// zspStsSizeErr: the bytes end before the frame does; zspStsCodecRangeErr: a reserved type
    ZspStatus status = zspStsNoErr;
    ZspvFrameKind kind = zspvFrameSpeech; ///< as its bits or its length tell
    std::size_t bytes = 0;
    std::int32_t samples = 0;
    std::int32_t bitRate = 0; ///< 0: as set
};

struct Codec {
    ZspvCodec info;
    std::int32_t variant = 0;
    EncoderFunctions encoder{};
    DecoderFunctions decoder{};
    /// `rest` holds a byte at least. Frames as zspvEncode() makes them, which is also how they
    /// stand in raw files: those of AMR and AMR-WB begin with the octet FT << 3 | Q << 2.
    Frame (*look)(const Codec& codec, In8 rest) noexcept = nullptr;
    const PayloadFormat* payload = nullptr;

    bool has(ZspvCodecFlags flag) const noexcept { return (info.flags & flag) != 0; }
    /// Whether a call takes any number of steps rather than one frame.
    bool takesSteps() const noexcept { return info.stepSamples < info.frameSamples; }
};

/// Octets of a step of a codec that takes steps.
constexpr std::int32_t stepBytes(const ZspvCodec& info) noexcept
{
    return info.maxFrameBytes * info.stepSamples / info.frameSamples;
}

/// Samples that the steps in so many bytes hold; zspStsSizeErr where they are no whole steps, or
/// too many to count.
Frame wholeSteps(const Codec& codec, std::size_t bytes) noexcept;

/// The frame at the beginning of `rest`, by the codec's own `look` or, for steps, as many as there
/// are up to a nominal frame.
Frame lookAtFrame(const Codec& codec, In8 rest) noexcept;

/// The descriptor of a row, null if the row is not of this library.
const Codec* findCodec(const ZspvCodec* info) noexcept;

/// The settings that parameters with a plausible structSize ask for, or null for the defaults.
/// zspStsRangeErr: a bit rate or DTX that the codec does not have.
ZspStatus makeSettings(const Codec& codec, const ZspvParams* params, Settings& settings) noexcept;

/// Whether the codec has this bit rate.
bool hasBitRate(const ZspvCodec& info, std::int32_t bitRate) noexcept;

/// The functions of an encoder whose state is of type T, with
///     static std::size_t T::size(const Codec&)      bytes; more than sizeof(T) where the states of
///                                                   blocks stand behind it, see behind()
///     void T::start(const Codec&, const Settings&)  on memory with arbitrary content
///     Coded T::encode(const Codec&, const Settings&, In16, Out8)
template <typename T>
constexpr EncoderFunctions encoderFunctions() noexcept
{
    static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= kBoundary);
    return {.size = &T::size,
            .start =
                [](void* state, const Codec& codec, const Settings& settings) noexcept {
                    static_cast<T*>(state)->start(codec, settings);
                },
            .encode =
                [](void* state, const Codec& codec, const Settings& settings, In16 samples,
                   Out8 bytes) noexcept {
                    return static_cast<T*>(state)->encode(codec, settings, samples, bytes);
                }};
}

/// As encoderFunctions(), with
///     void T::decode(const Codec&, const Settings&, ZspvFrameKind, In8, Out16)
template <typename T>
constexpr DecoderFunctions decoderFunctions() noexcept
{
    static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= kBoundary);
    return {.size = &T::size,
            .start =
                [](void* state, const Codec& codec, const Settings& settings) noexcept {
                    static_cast<T*>(state)->start(codec, settings);
                },
            .decode =
                [](void* state, const Codec& codec, const Settings& settings, ZspvFrameKind kind,
                   In8 bytes, Out16 samples) noexcept {
                    static_cast<T*>(state)->decode(codec, settings, kind, bytes, samples);
                }};
}

} // namespace zsp::voice
