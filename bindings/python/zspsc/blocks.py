"""Every export of libzspsc under its own name, with the arguments of the C header in their order.

Arrays are numpy arrays of the type that the suffix names (16s is int16, 32fc is complex64). What a
function writes must be an array or a bytearray; what it only reads may be any sequence. A state is a
bytearray of the size that its query tells. An error raises `zspsc.Error`, a warning is returned.
Lengths are not held against the arrays: as in C, that is the caller's part.
"""

import numpy as _numpy

from ._library import load as _load

globals().update(_load("zspsc"))


def state(query, *arguments):
    """A state of the size that a query such as zspsEncodeGetStateSize_G726_16s8u tells."""
    size = _numpy.zeros(1, _numpy.int32)
    query(*arguments, size)
    return bytearray(int(size[0]))
