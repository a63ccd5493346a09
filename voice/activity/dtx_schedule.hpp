// What is sent for a frame when transmission is discontinuous, 3GPP TS 26.093 clause 5.1 (and TS
// 26.193, which has the same numbers): speech for the hangover of seven frames, a first silence
// descriptor, the next after three frames, then one every eight.
#pragma once

#include "voice/api/steps.hpp"
#include "zspsc/gsmamr_vad.h"
#include "zspvoice.h"

namespace zsp::voice::activity {

class DtxSchedule {
  public:
    /// The next frame, with its detector's decision.
    ZspvFrameKind next(bool speech, Steps& steps)
    {
        constexpr std::int16_t kSpeechMode = 7, kDtxMode = 25;
        constexpr int kFirstUpdate = 3, kUpdateInterval = 8; // frames
        std::int16_t mode = kSpeechMode, newSid = 0;
        steps.add(
            zspsEncDTXHandler_GSMAMR_16s(&hangover_, &elapsed_, &mode, &newSid, speech ? 1 : 0));
        if (mode != kDtxMode) return last_ = zspvFrameSpeech;
        if (last_ == zspvFrameSpeech) {
            untilUpdate_ = kFirstUpdate;
            return last_ = zspvFrameSidFirst;
        }
        if (--untilUpdate_ > 0) return last_ = zspvFrameNoData;
        untilUpdate_ = kUpdateInterval;
        return last_ = zspvFrameSidUpdate;
    }

  private:
    std::int16_t hangover_ = 7, elapsed_ = 32767;
    ZspvFrameKind last_ = zspvFrameSpeech;
    int untilUpdate_ = 0;
};

} // namespace zsp::voice::activity
