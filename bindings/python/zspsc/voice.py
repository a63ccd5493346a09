"""Every export of libzspvoice under its own name; see `zspsc.blocks` for arrays and errors.

Objects are received in a ctypes.c_void_p. The classes of `zspsc` itself are easier to use.
"""

from ._library import load as _load

globals().update(_load("zspvoice"))
