// The regular-pulse excitation of GSM full rate: every third sample of the weighted residual, coded
// in blocks.
#pragma once

#include "codecs/gsmfr/gsmfr_longterm.hpp"

namespace zsp::gsmfr {

// Each *Scalar function is a definition; the *Avx2 function beside it equals it in every result.

/// Clause 5.2.13. Input and output may be the same memory.
void weightScalar(InSegment e, Segment x) noexcept;
void weightAvx2(InSegment e, Segment x) noexcept;

/// Clause 5.2.14. Returns Mc.
int gridSelectScalar(InSegment x, Pulses xm) noexcept;
int gridSelectAvx2(InSegment x, Pulses xm) noexcept;

/// Clause 5.2.15. Returns xmaxc. Input and output may be the same memory, as below.
int apcmQuantScalar(InPulses xm, Pulses xmc) noexcept;
int apcmQuantAvx2(InPulses xm, Pulses xmc) noexcept;

/// Whether all codes are inside their range.
bool pulsesInRange(InPulses xmc) noexcept;

/// Clause 5.2.16; `xmaxc` is 0 to 63.
void apcmDequantScalar(InPulses xmc, int xmaxc, Pulses xmp) noexcept;
void apcmDequantAvx2(InPulses xmc, int xmaxc, Pulses xmp) noexcept;

} // namespace zsp::gsmfr
