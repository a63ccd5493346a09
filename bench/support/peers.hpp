// The peers that are measured in the same run, as far as their packages are installed.
#pragma once

#ifdef ZSPSC_PEER_FFTW
#include <fftw3.h>
#endif
#ifdef ZSPSC_PEER_LIBAVCODEC
#include "bench/support/avcodec.hpp"
#endif
#ifdef ZSPSC_PEER_LIBGSM
#include <gsm.h>
#endif
#ifdef ZSPSC_PEER_SPANDSP
#include <spandsp.h>
#endif
#ifdef ZSPSC_PEER_SPEEXDSP
#include <speex/speex_echo.h>
#include <speex/speex_preprocess.h>
#endif
