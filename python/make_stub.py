"""Writes the module's stub, with the types of every entry, by asking the module itself.

    make_stub.py OUTPUT
"""

import pathlib
import sys

from picturehost import _entries, _picturehost

HEAD = '''\
# Made by make_stub.py from what the plug-in registered.
import os
from collections.abc import Iterable, Mapping
from typing import Any, Literal, NamedTuple, Protocol, overload

import numpy as np
from numpy.typing import NDArray
from PIL import Image

_Colour = int | str
_Bytes = bytes | bytearray | memoryview | NDArray[Any]
_Path = str | bytes | os.PathLike[str] | os.PathLike[bytes]
_Damage = Literal["warn", "fail", "ignore"]
_Metadata = Literal["keep", "profile", "none"]

class _Readable(Protocol):
    def read(self) -> bytes: ...
class _Writable(Protocol):
    def write(self, data: bytes, /) -> Any: ...

class Error(Exception): ...
class NilResultError(Error): ...
class PictureFileWarning(UserWarning): ...
'''

PICTURE = '''
class Picture:
    def __init__(self, width: int, height: int) -> None: ...
    @staticmethod
    def open(path: _Path | _Readable, *, page: int = 1, %(reading)s) -> Picture: ...
    @staticmethod
    def open_pages(path: _Path | _Readable, *, %(reading)s) -> list[Picture]: ...
    @staticmethod
    def from_bytes(data: _Bytes, *, page: int = 1, %(reading)s) -> Picture: ...
    def save(self, path: _Path | _Writable, *, format: str | None = None, %(writing)s) -> None: ...
    @staticmethod
    def save_pages(
        pages: Iterable[Picture], path: _Path | _Writable, *, format: str | None = None, %(writing)s
    ) -> None: ...
    def to_bytes(self, format: str, *, %(writing)s) -> bytes: ...
    @property
    def metadata(self) -> Mapping[str, Any]: ...
    @staticmethod
    def from_array(array: Any, *, copy: bool = False, like: Picture | None = None) -> Picture: ...
    def to_array(self) -> NDArray[np.uint8]: ...
    @staticmethod
    def from_pil(image: Image.Image, *, like: Picture | None = None) -> Picture: ...
    def to_pil(self) -> Image.Image: ...
    def copy(self) -> Picture: ...
    def __copy__(self) -> Picture: ...
    def __deepcopy__(self, memo: dict[Any, Any], /) -> Picture: ...
    def _repr_png_(self) -> bytes: ...
    @property
    def width(self) -> int: ...
    @property
    def height(self) -> int: ...
    def __eq__(self, other: object) -> bool: ...
    def __hash__(self) -> int: ...
''' % {
    "reading": """damage: _Damage = "warn", keep_alpha: bool = False, to_srgb: bool = False,
        strict: bool = False, pixel_limit: float = 250""",
    "writing": """metadata: _Metadata = "keep", quality: int | None = None,
        lossless: bool = False, compression: int | str | None = None, strict: bool = False""",
}

GIVEN = {
    "integer": "int",
    "uint32": "int",
    "double": "float",
    "boolean": "bool",
    "color": "_Colour",
    "string": "str | bytes | None",
    "picture": "Picture | None",
    "memoryblock": "_Bytes | None",
}
RESULT = {
    "": "None",
    "integer": "int",
    "uint32": "int",
    "double": "float",
    "boolean": "bool",
    "color": "int",
    "string": "bytes",
    "picture": "Picture",
    "memoryblock": "NDArray[np.uint8]",
}


def parameter_text(declared):
    text = f"{declared.name}: {GIVEN[declared.type]}"
    if declared.has_default:
        return f"{text} = {declared.default!r}"
    if declared.byref:
        return f"{text} = {_entries.ZERO.get(declared.type)!r}"
    return text


def result_text(method):
    if any(declared.byref for declared in method.parameters):
        optional = " | None" if method.result == "boolean" else ""
        return f"_{method.name}Result{optional}"
    return RESULT[method.result] + (" | None" if method.result == "picture" else "")


def function_lines(method, indent, name=None, first=None, more=None, result=None):
    parameters = [first] if first else []
    parameters += [parameter_text(declared) for declared in method.parameters]
    if more:
        parameters.append(more)
    return [f"{indent}def {name or method.name}({', '.join(parameters)}) -> {result or result_text(method)}: ..."]


def result_classes(methods):
    """The named tuples of methods with byref parameters."""
    for method in methods:
        byrefs = [declared for declared in method.parameters if declared.byref]
        if not byrefs:
            continue
        yield f"class _{method.name}Result(NamedTuple):"
        for declared in byrefs:
            hides = "  # type: ignore[assignment]" if hasattr(tuple, declared.name) else ""
            yield f"    {declared.name}: {RESULT[declared.type]}{hides}"
        yield ""


def key_type(method):
    types = [GIVEN[declared.type] for declared in method.parameters]
    return types[0] if len(types) == 1 else f"tuple[{', '.join(types)}]"


def pair_classes(class_name, methods):
    for method in methods:
        if not method.assignable:
            continue
        yield f"class _{class_name}_{method.name}:"
        yield from function_lines(method, "    ", name="__call__", first="self")
        yield f"    def __getitem__(self, key: {key_type(method)}) -> {result_text(method)}: ..."
        value = GIVEN[method.result]
        yield f"    def __setitem__(self, key: {key_type(method)}, value: {value}) -> None: ..."
        yield ""


def method_lines(class_name, methods, indent="    ", first="self"):
    for name, overloads in _entries._group(methods).items():
        if overloads[0].assignable:
            yield f"{indent}@property"
            yield f"{indent}def {name}(self) -> _{class_name}_{name}: ..."
            continue
        for method in overloads:
            if len(overloads) > 1:
                yield f"{indent}@overload"
            yield from function_lines(method, indent, first=first)


def class_lines(registered):
    given = [f"{p.name}: {GIVEN[p.type]} = ..." for p in registered.properties]
    yield f"class {registered.name}:"
    yield f"    def __init__(self, *, {', '.join(given)}) -> None: ..."
    for declared in registered.properties:
        result = RESULT[declared.type] + (" | None" if declared.type == "picture" else "")
        yield "    @property"
        yield f"    def {declared.name}(self) -> {result}: ..."
        yield f"    @{declared.name}.setter"
        yield f"    def {declared.name}(self, value: {GIVEN[declared.type]}) -> None: ..."
    yield from method_lines(registered.name, registered.methods)
    yield ""


def stub():
    base = "Error"
    yield HEAD.rstrip()
    for name in _picturehost.exception_classes():
        yield f"class {name}({base}): ..." if base != "Error" else f"class {name}(Error):\n    ErrorNumber: int"
        base = _picturehost.exception_classes()[0]
    yield ""
    classes = _picturehost.classes()
    for registered in classes:
        yield from result_classes(registered.methods)
        yield from pair_classes(registered.name, registered.methods)
    yield PICTURE.strip()
    for registered in classes:
        if registered.extension:
            yield from method_lines(registered.name, registered.methods)
    yield ""
    for registered in classes:
        if not registered.extension:
            yield from class_lines(registered)
    yield from method_lines("", _picturehost.global_methods(), indent="", first=None)


pathlib.Path(sys.argv[1]).write_text("\n".join(stub()) + "\n")
