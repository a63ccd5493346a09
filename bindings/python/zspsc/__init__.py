"""Speech codecs, echo cancellation and voice activity with numpy arrays.

    import numpy, zspsc
    encoder, decoder = zspsc.Encoder("G726-32"), zspsc.Decoder("G726-32")
    payload, kind = encoder.encode(numpy.zeros(160, numpy.int16))
    heard = decoder.decode(payload)

`zspsc.blocks` and `zspsc.voice` have every function of the two libraries under its own name.
"""

import ctypes

import numpy

from . import voice
from ._library import Error, record

__all__ = ["Activity", "Decoder", "EchoCanceller", "Encoder", "Error", "codec", "codecs", "record"]


def codecs():
    """The records of all codecs."""
    return [voice.zspvCodecByIndex(i) for i in range(voice.zspvCodecCount())]


def codec(name, clock=0):
    """The record of a codec by its RTP name, "G722"."""
    found = voice.zspvCodecByName(name, clock)
    if found is None:
        raise ValueError(f"no codec is named {name}")
    return found


def _samples(values, dtype=numpy.int16):
    array = numpy.ascontiguousarray(values)
    if array.dtype != dtype or array.ndim != 1:
        raise TypeError(f"one row of {numpy.dtype(dtype)} is needed, "
                        f"not {array.ndim} of {array.dtype}")
    return array


class _Object:
    """Something that the voice library creates, and destroys when Python forgets it."""

    def __init__(self, family, *arguments):
        self._family, self._handle = family, ctypes.c_void_p()
        getattr(voice, f"zspv{family}Create")(*arguments, self._handle)

    def __del__(self):
        if getattr(self, "_handle", None):
            getattr(voice, f"zspv{self._family}Destroy")(self._handle)
            self._handle = None

    def reset(self):
        """Forgets the signal and keeps the settings."""
        getattr(voice, f"zspv{self._family}Reset")(self._handle)


class Encoder(_Object):
    """Encoder of a codec; keywords are fields of ZspvParams, such as bitRate=48000."""

    def __init__(self, name, **params):
        self.codec = codec(name)
        super().__init__("Encoder", self.codec, record("ZspvParams", **params))

    def encode(self, samples):
        """The coded bytes of one frame or block, and their kind (zspsc.voice.zspvFrameSpeech)."""
        samples = _samples(samples)
        frames = -(-len(samples) // self.codec.frameSamples)
        coded = numpy.empty(max(frames, 1) * self.codec.maxFrameBytes, numpy.uint8)
        length, kind = numpy.zeros(1, numpy.int32), numpy.zeros(1, numpy.int32)
        voice.zspvEncode(self._handle, samples, len(samples), coded, len(coded), length,
                         ctypes.c_void_p(kind.ctypes.data))
        return coded[:length[0]].tobytes(), int(kind[0])


class Decoder(_Object):
    """Decoder of a codec; keywords are fields of ZspvParams."""

    def __init__(self, name, **params):
        self.codec = codec(name)
        super().__init__("Decoder", self.codec, record("ZspvParams", **params))

    def _heard(self, function, *arguments):
        count, none = numpy.zeros(1, numpy.int32), numpy.empty(1, numpy.int16)
        try:  # asks for the room that it takes
            function(self._handle, *arguments, none, 0, count)
        except Error as refused:
            if count[0] == 0:
                raise refused
        heard = numpy.empty(max(int(count[0]), 1), numpy.int16)
        function(self._handle, *arguments, heard, len(heard), count)
        return heard[:count[0]]

    def decode(self, payload, kind=voice.zspvFrameSpeech):
        """The samples of a coded frame or block."""
        return self._heard(voice.zspvDecode, kind, payload, len(payload))

    def conceal(self):
        """One frame in place of one that did not come."""
        return self._heard(voice.zspvConceal)


class EchoCanceller(_Object):
    """Echo canceller; keywords are fields of ZspvEchoConfig, such as tailMs=200."""

    def __init__(self, sample_rate, suppressor=False, **config):
        super().__init__("Echo", record(
            "ZspvEchoConfig", sampleRate=sample_rate,
            suppressor=voice.zspvOn if suppressor else voice.zspvOff, **config))

    def process(self, far, mic):
        """The microphone's signal without the far end's echo; whole blocks of 10 ms."""
        far, mic = _samples(far), _samples(mic)
        if len(far) != len(mic):
            raise ValueError("far end and microphone must be equally long")
        out = numpy.empty_like(mic)
        voice.zspvEchoProcess(self._handle, far, mic, out, len(mic))
        return out

    def metrics(self):
        """What it has achieved, a record ZspvEchoMetrics."""
        metrics = record("ZspvEchoMetrics")
        voice.zspvEchoGetMetrics(self._handle, metrics)
        return metrics


class Activity(_Object):
    """Voice activity detector, zspsc.voice.zspvDetectorAmr1, -Amr2 or -AmrWb."""

    def __init__(self, detector, sample_rate, **config):
        super().__init__("Activity", record("ZspvActivityConfig", detector=detector,
                                            sampleRate=sample_rate, **config))

    def process(self, samples):
        """What is known about one frame of 20 ms, a record ZspvActivityInfo."""
        samples, info = _samples(samples), record("ZspvActivityInfo")
        voice.zspvActivityProcess(self._handle, samples, len(samples), info)
        return info
