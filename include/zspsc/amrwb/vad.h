/**
 * @file zspsc/amrwb/vad.h
 * @brief AMR-WB voice activity detection.
 */
#ifndef ZSPSC_AMRWB_VAD_H
#define ZSPSC_AMRWB_VAD_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_amrwb_vad AMR-WB voice activity detection
 *
 * The record is the caller's: plain data that may be copied, at any address. Init makes it ready
 * for the first frame; the word of tone flags is kept outside of it.
 * @{
 */

/** State of zspsVAD_AMRWB_16s(), 172 bytes. Bands begin at 0, 200, 400, 600, 800, 1200, 1600, 2000,
 *  2400, 3200, 4000 and 4800 Hz. */
typedef struct ZspVadWbState {
    int16_t bckr_est[12];  /**< noise estimate */
    int16_t ave_level[12]; /**< averaged level, for the stationarity estimate */
    int16_t old_level[12]; /**< level of the previous frame */
    int16_t sub_level[12]; /**< level of the last three quarters of the previous frame */
    int16_t a_data5[5][2]; /**< memories of the 5th-order half-band splits */
    int16_t a_data3[6];    /**< memories of the 3rd-order half-band splits */
    int16_t burst_count;   /**< length of the speech burst, frames */
    int16_t hang_count;    /**< frames left of the hangover */
    int16_t stat_count;    /**< stationarity counter, 20 down to 0 */
    int16_t vadreg;       /**< 15 flags, the newest in 0x4000: the bands stood out from the noise */
    int16_t sp_est_cnt;   /**< frames of the running estimate of the speech level */
    int16_t sp_max;       /**< loudest active frame of that estimate */
    int16_t sp_max_cnt;   /**< active frames of that estimate */
    int16_t speech_level; /**< estimated speech level */
    int32_t prev_pow_sum; /**< twice the sum of squares of the previous frame */
    int16_t energy_level[12]; /**< band levels of the last frame */
} ZspVadWbState;

/** The earlier name of ::ZspVadWbState. */
typedef ZspVadWbState VadWbState;

/**
 * Size of the detector's record.
 *
 * @param[out] size  172
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsVADGetSize_AMRWB_16s(int32_t* size);

/**
 * Makes the record ready for the first frame: bckr_est, ave_level and old_level 150 in every band,
 * speech_level 2050, all else 0. Only stat_count stays as it is: a caller who wants a defined start
 * zeroes the record first.
 *
 * @param[in,out] state  the detector's record
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsVADInit_AMRWB_16s(ZspVadWbState* state);

/**
 * Voice activity detector, one frame.
 *
 * Before the call the caller's pitch analysis shifts the tone flags right by one and sets 0x4000
 * when it found a tone. When the power of this frame and the last one is low, the two newest flags
 * are cleared, and the sign.
 *
 * The threshold of the decision falls with the noise and rises when speech is hardly louder. With
 * ilog2(x) = -log2(x / 2^31) in Q10 (31744 for 1 and less), noise a sixteenth of the sum of
 * bckr_est[1..11], base the same as a multiple of 8, and all products truncated:
 *
 *   t = max(204, 768 + 1509 (ilog2(noise) - 31744) / 2^15
 *                + clamp(-96 - 1339 (ilog2(speech_level - base) - 22527) / 2^15, -96, 96))
 *
 * after speech_level has been raised to base. Burst and hangover lengths, in frames, follow from
 * the same threshold: 8 + 297 (t - 768) / 2^15 and max(2, 12 - 1110 (t - 217) / 2^15).
 *
 * @param[in]     frame    256 samples of the 12.8 kHz core signal, 20 ms: high-passed at 50 Hz and
 *                         pre-emphasised by 1 - 0.68 z^-1, as the encoder's input stage gives it
 * @param[in,out] state    the detector's record
 * @param[in,out] tone     word of 15 tone flags, the newest in 0x4000
 * @param[out]    vadFlag  1 for speech, otherwise 0
 * @retval zspStsNullPtrErr  frame, state, tone or vadFlag is null
 * @see 3GPP TS 26.194
 */
ZSPSC_API ZspStatus zspsVAD_AMRWB_16s(const int16_t* frame, ZspVadWbState* state, int16_t* tone,
                                      int16_t* vadFlag);

/**
 * The band levels of the last frame.
 *
 * @param[in]  state   the detector's record
 * @param[out] levels  12 levels, from the lowest band up
 * @retval zspStsNullPtrErr  state or levels is null
 */
ZSPSC_API ZspStatus zspsVADGetEnergyLevel_AMRWB_16s(const ZspVadWbState* state, int16_t* levels);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
