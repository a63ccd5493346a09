/**
 * @file zspsc/gsmamr_vad.h
 * @brief GSM-AMR voice activity detection and DTX.
 */
#ifndef ZSPSC_GSMAMR_VAD_H
#define ZSPSC_GSMAMR_VAD_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_gsmamr GSM-AMR voice activity detection and DTX
 *
 * In the encoder's order: the open-loop pitch search, the detector, the handler with the detector's
 * flag; every frame goes into the encoder's buffer. The records are the caller's: plain data that
 * may be copied, at any address. Frames are 160 samples of 8 kHz linear PCM, 20 ms.
 *
 * Both detectors expect what the encoder's input stage gives, not the microphone's signal: halved,
 * and high-passed at 80 Hz (3GPP TS 26.090, clause 5.1). With other levels the noise estimates
 * and the power thresholds do not fit.
 *
 * Words of flags hold those of the last 15 frames, the newest in 0x4000, the oldest in 1.
 * @{
 */

/** State of zspsVAD1_GSMAMR_16s(), 116 bytes. Before the first frame the caller sets old_level,
 *  ave_level and bckr_est to 150 in every band, corr_hp_fast to 13106 and all else to 0. Bands
 *  begin at 0, 250, 500, 750, 1000, 1500, 2000, 2500 and 3000 Hz. */
typedef struct ZspVad1State {
    int16_t sub_level[9];       /**< level of the last fifth of the previous frame */
    int16_t old_level[9];       /**< level of the previous frame */
    int16_t ave_level[9];       /**< averaged level, for the stationarity estimate */
    int16_t bckr_est[9];        /**< noise estimate */
    int16_t a_data5[3][2];      /**< memories of the 5th-order half-band splits */
    int16_t a_data3[5];         /**< memories of the 3rd-order half-band splits */
    int16_t burst_count;        /**< length of the speech burst, frames */
    int16_t hang_count;         /**< frames left of the hangover */
    int16_t stat_count;         /**< stationarity counter, 20 down to 0 */
    int16_t vadreg;             /**< flags: the bands stood out from the noise */
    int16_t complex_high;       /**< flags: corr_hp_fast above 0.6 */
    int16_t complex_low;        /**< flags: corr_hp_fast above 0.5 */
    int16_t complex_hang_timer; /**< frames in a row with corr_hp_fast at 0.7 and above */
    int16_t complex_hang_count; /**< frames left of the hangover of complex signals */
    int16_t complex_warning;    /**< 1 when the background may be a complex signal */
    int16_t corr_hp_fast;       /**< smoothed high-pass correlation, Q15 */
    int16_t pitch;              /**< flags: stable pitch; written by the caller */
} ZspVad1State;

/** The earlier name of ::ZspVad1State. */
typedef ZspVad1State Vad1State;

/**
 * Voice activity detector, option 1, one frame.
 *
 * Before the call the caller's pitch analysis shifts state->pitch and the tone flags right by one
 * and sets 0x4000 in them when it found a stable pitch and a tone.
 *
 * @param[in]     src         200 samples, of which those from src[40] on are new and go through
 *                            the filter bank; the first 40 are the last 40 of the call before, and
 *                            the power is that of src[0..159]. In the encoder the last 40 are the
 *                            look-ahead.
 * @param[in,out] state       the detector's record
 * @param[out]    vadFlag     1 for speech, otherwise 0
 * @param         tone        word of tone flags; only the lower 16 bits are used
 * @param         bestCorrHp  normalised high-pass correlation of the open-loop pitch search, Q15
 * @retval zspStsNullPtrErr  src, state or vadFlag is null
 * @see 3GPP TS 26.094, option 1
 */
ZSPSC_API ZspStatus zspsVAD1_GSMAMR_16s(const int16_t* src, ZspVad1State* state, int16_t* vadFlag,
                                        int32_t tone, int16_t bestCorrHp);

/**
 * One frame of the transmit side's DTX handler: may this frame be comfort noise?
 *
 * A speech frame sets the hangover count to 7. Later frames count it down and stay in speech mode,
 * unless elapsed + hangover, after counting, is below 30. With the count at 0 a frame becomes
 * comfort noise with new parameters. Before the first frame the counts are 7 and 32767.
 *
 * @param[in,out] hangover  speech frames left of the hangover
 * @param[in,out] elapsed   frames since new comfort-noise parameters were possible, stops at 32767
 * @param[in,out] mode      set to 25 when the frame becomes comfort noise, otherwise kept
 * @param[out]    newSid    1 when new comfort-noise parameters are possible, otherwise 0
 * @param         vadFlag   the detector's flag; not 0 for speech
 * @retval zspStsNullPtrErr  hangover, elapsed, mode or newSid is null
 * @see 3GPP TS 26.093, transmit DTX handler
 */
ZSPSC_API ZspStatus zspsEncDTXHandler_GSMAMR_16s(int16_t* hangover, int16_t* elapsed, int16_t* mode,
                                                 int16_t* newSid, int16_t vadFlag);

/**
 * Enters one frame into the encoder's history for the averaging of comfort-noise parameters.
 *
 *   index = (index + 1) mod 8, lspHistory[10 * index ..] = lsp,
 *   logEnergyHistory[index] = log2(sum of squares / 160) / 2 in Q10
 *
 * The energy saturates at (2^31 - 1) / 2; silence is stored as -4261.
 *
 * @param[in]     speech            160 samples
 * @param[in]     lsp               10 line spectral pairs, Q15
 * @param[in,out] index             place of the newest entry, 0..7; not checked
 * @param[in,out] lspHistory        8 x 10 line spectral pairs, Q15
 * @param[in,out] logEnergyHistory  8 log energies, Q10, halved
 * @retval zspStsNullPtrErr  speech, lsp, index, lspHistory or logEnergyHistory is null
 * @see 3GPP TS 26.093, dtx_buffer
 */
ZSPSC_API ZspStatus zspsEncDTXBuffer_GSMAMR_16s(const int16_t* speech, const int16_t* lsp,
                                                int16_t* index, int16_t* lspHistory,
                                                int16_t* logEnergyHistory);

/**
 * As zspsEncDTXBuffer_GSMAMR_16s() for the decoder's history, whose log energies are not halved:
 * silence is stored as -8521.
 *
 * @param[in]     speech            160 synthesised samples
 * @param[in]     lsp               10 line spectral pairs, Q15
 * @param[in,out] index             place of the newest entry, 0..7; not checked
 * @param[in,out] lspHistory        8 x 10 line spectral pairs, Q15
 * @param[in,out] logEnergyHistory  8 log energies, Q10 (Q11 of the halved ones)
 * @retval zspStsNullPtrErr  speech, lsp, index, lspHistory or logEnergyHistory is null
 * @see 3GPP TS 26.093, decoder activity update
 */
ZSPSC_API ZspStatus zspsDecDTXBuffer_GSMAMR_16s(const int16_t* speech, const int16_t* lsp,
                                                int16_t* index, int16_t* lspHistory,
                                                int16_t* logEnergyHistory);

/**
 * State of the voice activity detector, option 2. All zero before the first frame.
 *
 * Levels and SNRs in dB are Q8. Channel energies are Q9, or Q4 in scaling state 1. The channels
 * begin at 125 Hz and get wider, from 125 to 500 Hz.
 */
typedef struct ZspVad2State {
    int32_t ch_enrg[16];         /**< smoothed channel energies */
    int32_t ch_noise[16];        /**< channel noise estimates, Q9 */
    int16_t ch_enrg_long_db[16]; /**< long-term channel energies, dB */
    int16_t pre_emp_mem;         /**< last sample, normalised, for the pre-emphasis */
    int16_t update_cnt;          /**< half-frames that counted towards a forced noise update */
    int16_t last_update_cnt;     /**< update_cnt of the half-frame before */
    int16_t hyster_cnt;          /**< half-frames without change of update_cnt */
    int16_t last_normb_shift;    /**< block shift of the half-frame before */
    int16_t shift_state;         /**< energy-scaling state, 0 or 1 */
    int16_t fupdate_flag;        /**< 1 when the last noise update was forced */
    int16_t tsnr;                /**< long-term peak SNR, dB */
    int16_t hangover;            /**< half-frames left of the hangover */
    int16_t burstcount;          /**< length of the current burst in half-frames */
    int16_t negSNRvar;           /**< variance of negative SNRs, Q8 */
    int16_t negSNRbias;          /**< what it adds to the threshold of the voice metric */
    int32_t frame_cnt;           /**< half-frames since the reset, stops at 2^31 - 1 */
} ZspVad2State;

/** The earlier name of ::ZspVad2State. */
typedef ZspVad2State Vad2State;

/**
 * Voice activity detection, option 2: sixteen FFT channels, voice metric and noise update.
 *
 * The frame's two half-frames of 80 samples are both run; the flag is 1 when either is speech.
 *
 * @param[in]     src      160 samples, all new
 * @param[in,out] state    the detector's state
 * @param[out]    vadFlag  1 for speech, otherwise 0
 * @param         ltpFlag  not 0 when the frame's long-term prediction gain was high; keeps a steady
 *                         tone from being taken for noise
 * @retval zspStsNullPtrErr  src, state or vadFlag is null
 * @see 3GPP TS 26.094, option 2
 */
ZSPSC_API ZspStatus zspsVAD2_GSMAMR_16s(const int16_t* src, ZspVad2State* state, int16_t* vadFlag,
                                        int32_t ltpFlag);

/**
 * Pre-emphasis: adds a multiple of the sample before to each sample.
 *
 *   dst[i] = sat16(src[i] + sat16((factor * src[i-1]) >> 15)), src[-1] being memory
 *
 * @param         factor  Q15; -26214 in the detector
 * @param[in]     src     len samples
 * @param[out]    dst     len samples; may be src, otherwise must not overlap it
 * @param         len     at least 1
 * @param[in,out] memory  the sample before src, then the last one of src
 * @retval zspStsNullPtrErr  src, dst or memory is null
 * @retval zspStsSizeErr     len < 1
 * @see 3GPP TS 26.094, option 2
 */
ZSPSC_API ZspStatus zspsPreemphasize_GSMAMR_16s(int16_t factor, const int16_t* src, int16_t* dst,
                                                int32_t len, int16_t* memory);

/**
 * Real FFT of 128 points in the fixed-point arithmetic of the detector.
 *
 *   X[k] = 1/64 sum x[n] e^(-2 pi i n k / 128)
 *
 * Every stage halves, rounds and saturates.
 *
 * @param[in,out] srcDst  128 samples, then the spectrum: X[0], X[64], re X[1], im X[1] ... im X[63]
 * @retval zspStsNullPtrErr  srcDst is null
 * @see 3GPP TS 26.094, option 2
 */
ZSPSC_API ZspStatus zspsFFTFwd_RToPerm_GSMAMR_16s_I(int16_t* srcDst);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
