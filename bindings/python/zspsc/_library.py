"""From the table of declarations to functions that take numpy arrays."""

import ctypes
import os
import sys

import numpy

from . import _declarations

_SCALARS = {
    "int8_t": ctypes.c_int8, "uint8_t": ctypes.c_uint8, "int16_t": ctypes.c_int16,
    "uint16_t": ctypes.c_uint16, "int32_t": ctypes.c_int32, "uint32_t": ctypes.c_uint32,
    "int64_t": ctypes.c_int64, "float": ctypes.c_float, "double": ctypes.c_double,
    "char": ctypes.c_char, "ZspStatus": ctypes.c_int32,
    **{name: ctypes.c_int32 for name in _declarations.ENUMS},
}
_ELEMENTS = {
    "uint8_t": numpy.uint8, "int16_t": numpy.int16, "int32_t": numpy.int32, "float": numpy.float32,
    "double": numpy.float64, "char": numpy.uint8, "Zsp32fc": numpy.complex64,
    "Zsp32sc": numpy.dtype([("re", numpy.int32), ("im", numpy.int32)]),
}
_RECORDS = {}


class Error(Exception):
    """A call that returned an error; `status` is its value."""

    def __init__(self, function, status):
        names = [name for name, value in _declarations.CONSTANTS.items()
                 if name.startswith("zspSts") and value == status]
        super().__init__(f"{function}: {names[0] if names else status}")
        self.status = status


def _field_type(kind, dims):
    if kind == "const char *":
        base = ctypes.c_char_p
    elif kind.endswith("*"):
        base = ctypes.POINTER(_SCALARS[kind.replace("const ", "").rstrip(" *")])
    else:
        base = _RECORDS.get(kind) or _SCALARS[kind]
    for size in reversed(dims):
        base = base * size
    return base


def _make_records():
    waiting = dict(_declarations.RECORDS)
    while waiting:
        for name, fields in list(waiting.items()):
            if any(kind in waiting for _, kind, _ in fields):
                continue  # holds a record that is not made yet
            _RECORDS[name] = type(name, (ctypes.Structure,), {
                "_fields_": [(field, _field_type(kind, dims)) for field, kind, dims in fields],
                "__doc__": f"The record {name} of the C header."})
            del waiting[name]


_make_records()


def record(name, **values):
    """A public record, all zero but for the values given; structSize is set where it has one."""
    made = _RECORDS[name]()
    if hasattr(made, "structSize"):
        made.structSize = ctypes.sizeof(made)
    for field, value in values.items():
        if not hasattr(made, field):
            raise TypeError(f"{name} has no field {field}")
        setattr(made, field, value)
    return made


def _array(value, element, writable):
    """The array behind an argument; what is only read may be any sequence."""
    dtype = numpy.dtype(element)
    if isinstance(value, (bytes, bytearray, memoryview)) and dtype.itemsize == 1:
        value = numpy.frombuffer(value, dtype)
    if not isinstance(value, numpy.ndarray):
        if writable:
            raise TypeError(f"an array of {dtype} is needed that can be written, "
                            f"not {type(value).__name__}")
        value = numpy.asarray(value, dtype)
    if value.dtype != dtype:
        raise TypeError(f"an array of {dtype} is needed, not of {value.dtype}")
    if not value.flags.c_contiguous or (writable and not value.flags.writeable):
        raise TypeError("the array must be contiguous, and writable where the function writes")
    return value


def _pointer(kind):
    """The converter for an argument of a pointer type: value -> (what ctypes takes, what to hold)."""
    levels, base = kind.count("*"), kind.replace("const", " ").replace("*", " ").split()[0]
    writable = not kind.startswith("const")
    record_type = _RECORDS.get(base) if base not in _ELEMENTS else None

    def to_array(value):
        array = _array(value, _ELEMENTS[base], writable)
        return array.ctypes.data, array

    def to_rows(values):
        arrays = [_array(value, _ELEMENTS[base], writable) for value in values]
        rows = (ctypes.c_void_p * len(arrays))(*[array.ctypes.data for array in arrays])
        return ctypes.addressof(rows), (rows, arrays)

    def to_text(value):
        text = value.encode() if isinstance(value, str) else value
        held = ctypes.create_string_buffer(text)
        return ctypes.addressof(held), held

    def to_record(value):
        if isinstance(value, ctypes.POINTER(record_type)):
            value = value.contents
        array = isinstance(value, ctypes.Array) and value._type_ is record_type
        if not array and not isinstance(value, record_type):
            raise TypeError(f"a record {base} is needed, not {type(value).__name__}")
        return ctypes.addressof(value), value

    def to_memory(value):
        if isinstance(value, ctypes.c_void_p):
            return value.value, value
        if isinstance(value, numpy.ndarray):
            array = _array(value, value.dtype, writable)
            return array.ctypes.data, array
        held = (ctypes.c_char * len(value)).from_buffer(value)  # a bytearray
        return ctypes.addressof(held), held

    def to_handle(value):
        if not isinstance(value, ctypes.c_void_p):
            raise TypeError(f"a ctypes.c_void_p is needed that receives a {base}")
        return ctypes.addressof(value), value

    if levels == 2:
        chosen = to_rows if base in _ELEMENTS else to_handle
    elif kind == "const char *":
        chosen = to_text
    elif base in _ELEMENTS:
        chosen = to_array
    else:
        chosen = to_record if record_type else to_memory

    return lambda value: (None, None) if value is None else chosen(value)


def _function(library, name, result, arguments):
    address = getattr(library, name)
    pointers = {i: _pointer(kind) for i, (_, kind) in enumerate(arguments) if "*" in kind}
    address.argtypes = [ctypes.c_void_p if "*" in kind else _SCALARS[kind] for _, kind in arguments]
    base = result.replace("const ", "").rstrip(" *")
    if result == "void":
        address.restype = None
    elif result == "const char *":
        address.restype = ctypes.c_char_p
    elif "*" in result:
        address.restype = ctypes.POINTER(_RECORDS[base])
    else:
        address.restype = _SCALARS[result]

    def call(*values):
        if len(values) != len(arguments):
            raise TypeError(f"{name} takes {len(arguments)} arguments: {call.__doc__}")
        passed, held = list(values), []
        for index, convert in pointers.items():
            try:
                passed[index], hold = convert(values[index])
            except TypeError as wrong:
                raise TypeError(f"{name}, {arguments[index][0]}: {wrong}") from None
            held.append(hold)
        returned = address(*passed)
        if result == "ZspStatus" and returned < 0:
            raise Error(name, returned)
        if "*" in result and result != "const char *":
            return returned.contents if returned else None
        return returned

    call.__name__ = name
    call.__doc__ = f"{result} {name}({', '.join(f'{kind} {arg}' for arg, kind in arguments)})"
    return call


def _open(name):
    folder = os.environ.get("ZSPSC_LIBRARY_DIR", "")
    if sys.platform == "win32":
        return ctypes.CDLL(os.path.join(folder, f"{name}.dll"))
    version = _declarations.CONSTANTS[f"{name.upper()}_VERSION_MAJOR"]
    return ctypes.CDLL(os.path.join(folder, f"lib{name}.so.{version}"))


def load(name):
    """All functions of a library by their names, constants and records included."""
    library = _open(name)
    made = {function: _function(library, function, result, arguments)
            for function, result, arguments in _declarations.FUNCTIONS[name]}
    return {**made, **_declarations.CONSTANTS, **_RECORDS}
