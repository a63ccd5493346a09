#!/usr/bin/env python3
"""Speech through every codec, then over a road that loses one packet in twenty: figures and a picture.

    lossy_codecs.py [DIRECTORY_WITH_SPEECH] [PICTURE.png]

The directory holds speech_8k.wav and speech_16k.wav, as data/ does beside the sources.
"""

# %% What is needed
import sys
import wave

import matplotlib
import numpy

import zspsc
from zspsc import voice

matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402  (the backend comes first)

FOLDER = sys.argv[1] if len(sys.argv) > 1 else "data"
PICTURE = sys.argv[2] if len(sys.argv) > 2 else "lossy_codecs.png"


def speech(rate):
    with wave.open(f"{FOLDER}/speech_{rate // 1000}k.wav") as file:
        return numpy.frombuffer(file.readframes(file.getnframes()), numpy.int16)


# %% A call: packets of 20 ms, of which some do not arrive
def call(name, loss):
    encoder, decoder = zspsc.Encoder(name), zspsc.Decoder(name)
    rate, frame = encoder.codec.sampleRate, encoder.codec.frameSamples
    packet = max(frame, rate // 50)
    random = numpy.random.default_rng(7)
    said = speech(rate)
    heard, octets, lost = [], 0, []
    for start in range(0, len(said) - packet + 1, packet):
        gone = random.random() < loss
        for first in range(start, start + packet, frame):
            payload, kind = encoder.encode(said[first:first + frame])
            octets += len(payload)
            heard.append(decoder.decode(b"", voice.zspvFrameLost) if gone
                         else decoder.decode(payload, kind))
        if gone:
            lost.append(start / rate)
    heard = numpy.concatenate(heard)
    return said[:len(heard)], heard, rate, 8e-3 * octets * rate / len(heard), lost, packet / rate


def segmental_snr(said, heard, delay):
    """Mean SNR of the 16 ms segments that hold speech, each limited to -10..35 dB."""
    said, heard = said[:len(said) - delay or None].astype(float), heard[delay:].astype(float)
    rows = len(said) // 128
    said, error = said[:rows * 128].reshape(rows, 128), (heard - said)[:rows * 128].reshape(rows, 128)
    power, noise = numpy.mean(said ** 2, 1), numpy.mean(error ** 2, 1) + 1e-3
    talks = power > 1000
    return numpy.mean(numpy.clip(10 * numpy.log10(power[talks] / noise[talks]), -10, 35))


# %% Figures for all of them
print(f"{'codec':14}{'kHz':>4}{'kbit/s':>8}{'dB':>7}{'dB with loss':>14}")
for codec in zspsc.codecs():
    name = codec.rtpName.decode()
    delay = codec.filterDelay + codec.lookAhead
    whole, lossy = call(name, 0), call(name, 0.05)
    print(f"{name:14}{codec.sampleRate // 1000:4}{whole[3]:8.1f}"
          f"{segmental_snr(*whole[:2], delay):7.1f}{segmental_snr(*lossy[:2], delay):14.1f}")

# %% One call to look at
said, heard, rate, _, lost, length = call("G722", 0.05)
figure, axes = pyplot.subplots(3, 1, figsize=(11, 8), sharex=True, constrained_layout=True)
time = numpy.arange(len(said)) / rate
axes[0].plot(time, said / 32768, color="#2f6fde", linewidth=0.5, label="said")
axes[0].plot(time, heard / 32768 - 1, color="#1f8f6f", linewidth=0.5, label="heard")
for start in lost:
    axes[0].axvspan(start, start + length, color="#d1552b", alpha=0.4, linewidth=0)
axes[0].set(title="G.722 over a road that loses 5 % of its packets (red)", yticks=[])
axes[0].legend(loc="upper right")
for axis, signal, title in ((axes[1], said, "said"), (axes[2], heard, "heard")):
    floor = numpy.random.default_rng(1).standard_normal(len(signal))  # digital silence has no dB
    axis.specgram(signal + floor, 256, rate, noverlap=192, cmap="magma", vmin=-40, vmax=40)
    axis.set(title=title, ylabel="Hz")
axes[2].set(xlabel="time, s", xlim=(0, len(said) / rate))
figure.savefig(PICTURE, dpi=110)
print(f"Picture: {PICTURE}")
