"""The Python package against the libraries: layouts, results, and arguments that are refused."""

import re
import sys
import unittest

import numpy

import zspsc
from zspsc import blocks, voice
from zspsc import _library

ROOT = sys.argv.pop()


def tone(count=1600):
    return (8000 * numpy.sin(numpy.arange(count) * 0.2)).astype(numpy.int16)


class Layout(unittest.TestCase):
    """The records lie in memory as compiled programs have them."""

    def test_offsets_and_sizes(self):
        for name in ("records.inc", "voice_records.inc"):
            with open(f"{ROOT}/tests/package/abi/{name}", encoding="ascii") as file:
                text = file.read()
            for record, size in re.findall(r"RECORD\((Zsp\w+), (\d+)\)", text):
                self.assertEqual(_library.ctypes.sizeof(_library._RECORDS[record]), int(size))
            for record, field, offset in re.findall(r"FIELD\((Zsp\w+), (\w+), (\d+)\)", text):
                self.assertEqual(getattr(_library._RECORDS[record], field).offset, int(offset),
                                 f"{record}.{field}")


class Blocks(unittest.TestCase):
    def test_blocks_and_whole_coder_agree(self):
        """G.726 from its blocks, packed by hand, is what the encoder of the voice library gives."""
        state = blocks.state(blocks.zspsEncodeGetStateSize_G726_16s8u)
        blocks.zspsEncodeInit_G726_16s8u(state, blocks.zspG726Rate32)
        codes = numpy.empty(1600, numpy.uint8)
        blocks.zspsEncode_G726_16s8u(state, tone() >> 2, codes, len(codes))
        payload, kind = zspsc.Encoder("G726-32").encode(tone())
        self.assertEqual(kind, voice.zspvFrameSpeech)
        self.assertEqual((codes[0::2] | codes[1::2] << 4).tobytes(), payload)

    def test_complex_arrays(self):
        """Bands of a filter bank, joined again: the signal, 212 samples later."""
        def bank():
            sizes = numpy.zeros((3, 1), numpy.int32)
            blocks.zspsSubbandProcessGetSize_32f(6, 256, *sizes)
            made = bytearray(int(sizes[0][0]))
            blocks.zspsSubbandProcessInit_32f(made, 6, 44, 256, None, None)
            return made, bytearray(int(sizes[2][0]))

        split, join = bank(), bank()
        signal = tone(4400).astype(numpy.float32)
        bands, out = numpy.empty(33, numpy.complex64), numpy.empty_like(signal)
        for start in range(0, 4400, 44):
            blocks.zspsSubbandAnalysis_32f32fc(signal[start:start + 44], bands, *split)
            blocks.zspsSubbandSynthesis_32fc32f(bands, out[start:start + 44], *join)
        self.assertGreater(numpy.corrcoef(out[1000:], signal[788:-212])[0, 1], 0.98)

    def test_sequences_and_records(self):
        out = numpy.full(4, 7, numpy.int16)
        blocks.zspsMul_NR_16s_Sfs([16384, -32768, 3, 1], [2, -32768, 5, 1], out, 4, 15)
        self.assertEqual(out.tolist(), [1, 32767, 0, 0])
        state = zspsc.record("ZspAlcState_G169")
        blocks.zspsALCInit_G169_16s(state)
        self.assertEqual(state.peakLimit, 32767)

    def test_what_is_refused(self):
        state, codes = bytearray(88), numpy.empty(160, numpy.uint8)
        with self.assertRaises(zspsc.Error) as caught:
            blocks.zspsEncodeInit_G726_16s8u(state, 99)
        self.assertEqual(caught.exception.status, blocks.zspStsRangeErr)
        frozen = codes.copy()
        frozen.flags.writeable = False
        encode = blocks.zspsEncode_G726_16s8u
        for samples, out in ((tone(160).astype(float), codes), (tone(160), frozen),
                             (tone(320)[::2], codes), (tone(160), [0] * 160),
                             (tone(160), codes.astype(numpy.int8))):
            with self.assertRaises(TypeError):
                encode(state, samples, out, 160)
        with self.assertRaises(TypeError):
            encode(state, tone(160), codes)
        with self.assertRaises(zspsc.Error):
            encode(None, tone(160), codes, 160)


class Voice(unittest.TestCase):
    def test_every_codec_there_and_back(self):
        for codec in zspsc.codecs():
            name = codec.rtpName.decode()
            encoder, decoder = zspsc.Encoder(name), zspsc.Decoder(name)
            frame = codec.frameSamples
            for start in range(0, 4 * frame, frame):
                payload, kind = encoder.encode(tone(4 * frame)[start:start + frame])
                heard = decoder.decode(payload, kind)
                self.assertEqual(len(heard), frame, name)
            self.assertEqual(len(decoder.conceal()), frame, name)

    def test_settings_and_refusals(self):
        encoder, rate = zspsc.Encoder("G722", bitRate=48000), numpy.zeros(1, numpy.int32)
        voice.zspvEncoderGetBitRate(encoder._handle, rate)
        self.assertEqual(rate[0], 48000)
        with self.assertRaises(ValueError):
            zspsc.Encoder("none")
        with self.assertRaises(TypeError):
            zspsc.Encoder("G722", rate=48000)
        with self.assertRaises(zspsc.Error):
            zspsc.Encoder("G722", bitRate=1)
        with self.assertRaises(zspsc.Error):
            zspsc.Decoder("G726-24").decode(b"ab")

    def test_echo_goes(self):
        random = numpy.random.default_rng(1)
        far = (3000 * random.standard_normal(32000)).astype(numpy.int16)
        mic = numpy.roll(far // 2, 40)
        echo = zspsc.EchoCanceller(8000, tailMs=32)
        left = echo.process(far, mic)[-8000:].astype(float)
        loss = 10 * numpy.log10(numpy.mean(mic[-8000:].astype(float) ** 2) / numpy.mean(left ** 2))
        self.assertGreater(loss, 25)
        self.assertEqual(echo.metrics().framesProcessed, 400)

    def test_activity(self):
        detector = zspsc.Activity(voice.zspvDetectorAmr2, 8000)
        random = numpy.random.default_rng(2)
        noise = (20 * random.standard_normal(16000)).astype(numpy.int16)
        noise[8000:] += tone(8000) * (numpy.arange(8000) // 800 % 2 == 0)
        active = [detector.process(noise[i:i + 160]).active for i in range(0, 16000, 160)]
        self.assertFalse(any(active[20:50]))
        self.assertTrue(all(active[52:55]))


if __name__ == "__main__":
    unittest.main()
