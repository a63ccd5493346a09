/**
 * @file zspsc.h
 * @brief Speech-coding and voice-processing primitives for x86-64 with AVX2.
 *
 * Families that remember something between calls keep it in a state. Its life is always the same:
 *
 *     size    zspsXGetStateSize(&size) says how many bytes the state takes
 *     memory  the caller provides them, at any address and from wherever it likes
 *     start   zspsXInit(..., state) writes the whole state; calling it again restarts
 *     work    zspsX(..., state), any number of times, block after block
 *     end     the caller takes its memory back; there is nothing to release
 *
 * | family | what it offers | state |
 * | --- | --- | --- |
 * | products, correlation, scaling | kernels that codecs share | none |
 * | G.711 | encoding and decoding in both laws | none |
 * | G.722 | band split and join, encoder, decoder | 144 bytes and a delay line |
 * | G.723.1 | all blocks of encoder and decoder | plain arrays and public records |
 * | G.726 | encoder and decoder at four rates | 88 and 92 bytes |
 * | G.728 | all blocks of coder, post-filter and concealment | memories of the caller's; 76 bytes |
 * | linear prediction | filters and sums that coders share | none |
 * | G.729 | all blocks of encoder and decoder, Annexes A and B | plain arrays; public records |
 * | GSM full rate | the blocks of the coder | the caller's arrays, cleared at the start |
 * | GSM-AMR | two activity detectors, DTX bookkeeping | public records, set up by the caller |
 * | AMR-WB | activity detector; spectral frequencies | a public record; none |
 * | echo cancellation | filter bank, controller, filters, tone detector | see the size queries |
 * | level control | G.169 | a public record, 124 bytes |
 *
 * A whole program, which codes raw 16-bit samples with G.726 at 32 kbit/s:
 *
 * @code
 * #include <stdio.h>
 * #include <stdlib.h>
 * #include <zspsc.h>
 *
 * int main(void)
 * {
 *     int16_t speech[160];
 *     uint8_t codes[160];
 *     int32_t size;
 *     size_t i, n;
 *     void* encoder;
 *
 *     zspsEncodeGetStateSize_G726_16s8u(&size);
 *     encoder = malloc((size_t)size);
 *     if (zspsEncodeInit_G726_16s8u(encoder, zspG726Rate32) != zspStsNoErr) return 1;
 *     while ((n = fread(speech, sizeof speech[0], 160, stdin)) > 0) {
 *         for (i = 0; i < n; ++i) speech[i] = (int16_t)(speech[i] / 4); // 14 bits are coded
 *         if (zspsEncode_G726_16s8u(encoder, speech, codes, (int32_t)n) != zspStsNoErr) return 1;
 *         fwrite(codes, 1, n, stdout); // each byte a code word of four bits
 *     }
 *     free(encoder);
 *     return 0;
 * }
 * @endcode
 *
 * What holds for every function:
 *
 *  - The status is the return value; 0 (::zspStsNoErr) is success, negative values are errors,
 *    positive values warnings.
 *  - Arguments are checked in the order in which a function lists its results. A failed check
 *    writes nothing, neither to outputs nor to a state, unless a function says otherwise.
 *  - Arrays hold their elements contiguously in the byte order of the machine and are aligned as
 *    their element type is. Output arrays must not overlap other arguments unless a function says
 *    that they may.
 *  - A state is a buffer of the caller's. Functions on different states may run at the same time on
 *    any threads; calls on one state are the caller's to serialise. Nothing is allocated.
 *  - Functions on float samples take the caller's rounding mode; what is said of their results
 *    holds for rounding to nearest. Denormal numbers, those below 1.2e-38, count as zero: as
 *    arguments, in states, and as the result of every single step. Processors handle them slowly,
 *    and a signal that fades to silence would meet them for long. No other number is touched. After
 *    a call the floating-point modes and exception flags are the caller's as they were before it.
 *  - Qn is a signed integer that holds a value times 2^n. "sat16" and "sat32" limit to a signed 16-
 *    or 32-bit integer, ">>" is an arithmetic shift.
 *
 * The functions stand in parts of this header, in the folder zspsc beside it: one per family, or a
 * folder per family that has several. Include this page for all of them, or a part alone.
 *
 * Suffixes of the names give the element types: 8u, 16s, 32s, 32f, 64f; 32sc and 32fc for complex
 * values; _I for in-place operation, _Sfs for a scale factor.
 */
#ifndef ZSPSC_H
#define ZSPSC_H

#include "zspsc/alc_g169.h"
#include "zspsc/amrwb/isf.h"
#include "zspsc/amrwb/vad.h"
#include "zspsc/celp.h"
#include "zspsc/correlation.h"
#include "zspsc/ec/bank.h"
#include "zspsc/ec/controller.h"
#include "zspsc/ec/filters.h"
#include "zspsc/ec/tone.h"
#include "zspsc/g711.h"
#include "zspsc/g722.h"
#include "zspsc/g723/decoder.h"
#include "zspsc/g723/encoder.h"
#include "zspsc/g723/noise.h"
#include "zspsc/g723/search.h"
#include "zspsc/g726.h"
#include "zspsc/g728/adapt.h"
#include "zspsc/g728/coder.h"
#include "zspsc/g728/postfilter.h"
#include "zspsc/g729/annexb.h"
#include "zspsc/g729/decoder.h"
#include "zspsc/g729/encoder.h"
#include "zspsc/g729/filters.h"
#include "zspsc/g729/lp.h"
#include "zspsc/g729/postfilter.h"
#include "zspsc/gsmamr_vad.h"
#include "zspsc/gsmfr/frame.h"
#include "zspsc/gsmfr/residual.h"
#include "zspsc/gsmfr/shortterm.h"
#include "zspsc/products.h"
#include "zspsc/types.h"

#endif
