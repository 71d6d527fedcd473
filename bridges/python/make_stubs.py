"""Writes the stubs of the package nifikral: what its source says, and a signature for each effect that editors complete.
Usage: make_stubs.py SOURCE CATALOGUE STUBS, the catalogue as `nifikral list --json` prints it."""

import ast
import json
import sys
import textwrap

HEAD = '''"""{summary}"""

from os import PathLike
from typing import Any, Dict, FrozenSet, Generic, Iterable, Iterator, List, Literal, Optional, Sequence, Tuple, TypeVar, Union, overload

from numpy import uint8
from numpy.typing import NDArray

Array = NDArray[uint8]
Planes = Union[Tuple[Array, ...], List[Array]]
Picture = TypeVar("Picture", Array, Planes)
Order = Literal["rgb", "bgr"]
Path = Union[str, PathLike[str]]

__version__: str
order: Order

class Error(Exception):
    code: int
class UsageError(Error, ValueError): ...
class FileError(Error, OSError): ...

class Parameter:
    name: str
    type: str
    default: Union[int, float, str]
    meaning: str
    unit: str
    keyframable: bool
    range: Tuple[Optional[float], Optional[float]]
    choices: Dict[int, str]

class EffectInfo:
    name: str
    category: str
    summary: str
    synonyms: Tuple[str, ...]
    traits: FrozenSet[str]
    parameters: Dict[str, Parameter]

class _Effects:
    def __call__(self, picture: Picture, /, *, out: Optional[Picture] = None, position: Optional[int] = None) -> Picture: ...

class Frames:
    width: int
    height: int
    rate: float
    seeks: bool
    def __len__(self) -> int: ...
    def __iter__(self) -> Iterator[Array]: ...
    @overload
    def __getitem__(self, index: int) -> Array: ...
    @overload
    def __getitem__(self, index: slice) -> List[Array]: ...
'''

# Of functions and initialisers, by the names of their arguments; of others, Any.
TYPES = {
    "captions": "str", "channels": "Literal[3, 4]", "color": "str", "effects": "Union[str, _Effects]", "face": "str",
    "fit": "str", "font_size": "int", "in_motion": "str", "in_seconds": "float", "motion_amount": "int",
    "motions": "Optional[Sequence[str]]", "order": "Optional[Order]", "out_motion": "str", "out_seconds": "float",
    "over": "Optional[Array]", "page": "int", "pictures": "Union[Path, Iterable[Path]]", "place": "str",
    "project": "Path", "query": "str", "rate": "float", "seconds": "float", "seed": "int", "size": "Tuple[int, int]",
    "sort": 'Literal["given", "name", "date", "random"]', "strict": "bool", "style": "str", "template": "Optional[str]",
    "text": "str", "transition": "float", "transitions": "Optional[Sequence[str]]",
}
RESULTS = {"effects": "Dict[str, EffectInfo]", "menu": "Frames", "slideshow": "Frames", "title": "Frames", "__init__": "None"}


def described(text, indent):
    lines = '"""' + text.replace("\\", "\\\\") + '"""'
    return textwrap.indent(lines, " " * indent) + "\n" + " " * indent + "...\n"


def signature(function, indent=0):
    arguments = function.args
    for argument in [*arguments.args, *arguments.kwonlyargs, *filter(None, [arguments.vararg])]:
        if argument.arg != "self":
            argument.annotation = ast.parse(TYPES.get(argument.arg, "Any"), mode="eval").body
    return " " * indent + f"def {function.name}({ast.unparse(arguments)}) -> {RESULTS[function.name]}:\n" + described(
        ast.get_docstring(function) or "", indent + 4)


def value_type(parameter):
    if parameter["kind"] == "switch":
        return "Union[bool, int, str]"
    if parameter["kind"] == "word" and not parameter.get("separator"):
        return "Literal[" + ", ".join(f'"{word}"' for word in parameter["words"]) + "]"
    return {"text": "str", "real": "Union[float, str]"}.get(parameter["type"], "Union[int, str]")


def overloads(effects, head, tail, result, indent):
    """A signature for each effect, with its parameters, and one for any other request, which has its parameters in it:
    taken there as keywords too, a parameter that an effect does not have would never be found."""
    region = ", inside: str = ..., outside: str = ..., soft: Union[int, str] = ..."
    text = ""
    for effect in effects:
        keywords = "".join(f", {p['short']}: {value_type(p)} = ..." for p in effect["parameters"])
        meaning = [effect["summary"], ""]
        for p in effect["parameters"]:
            limits, unit = p.get("sensible", {}), p.get("unit", "")
            values = ", ".join(f"{c['value']} {c['meaning']}" for c in p.get("choices", ()))
            if not values and len(limits) == 2 and p["kind"] != "switch":
                values = f"{limits['minimum']} to {limits['maximum']} {unit}".rstrip()
            meaning.append(f"{p['short']}: {p['meaning']}" + (f"; {values}" if values else ""))
        text += (f"@overload\n{head.replace('NAME', 'Literal[' + json.dumps(effect['name']) + ']')}{tail}{keywords}{region}) -> {result}:\n"
                 + described("\n".join(meaning), 4))
    text += f"@overload\n{head.replace('NAME', 'Union[str, _Effects]' if 'picture' in head else 'str')}{tail}) -> {result}: ...\n"
    return textwrap.indent(text, " " * indent)


def main(source, catalogue, stubs):
    tree = ast.parse(open(source, encoding="utf-8").read())
    effects = [e for e in json.load(open(catalogue, encoding="utf-8"))["effects"]
               if "generator" not in e["traits"] or e["name"] == "title"]
    named = {node.name: node for node in tree.body if isinstance(node, (ast.FunctionDef, ast.ClassDef))}
    text = HEAD.format(summary=ast.get_docstring(tree).split("\n")[0])
    for name in ("effects", "menu", "slideshow", "title"):
        text += "\n" + signature(named[name])
    text += '\nclass Effect(_Effects):\n' + textwrap.indent('"""' + ast.get_docstring(named["Effect"]) + '"""\n', "    ")
    text += overloads(effects, "def __init__(self, name: NAME, /, *", ", order: Optional[Order] = None, rate: float = 25", "None", 4)
    text += '\nclass Chain(_Effects):\n' + textwrap.indent('"""' + ast.get_docstring(named["Chain"]) + '"""\n', "    ")
    text += signature(next(node for node in named["Chain"].body if isinstance(node, ast.FunctionDef)), 4) + "\n"
    text += overloads(effects, "def apply(picture: Picture, effect: NAME, /, *",
                      ", out: Optional[Picture] = None, position: int = 0, order: Optional[Order] = None", "Picture", 0)
    ast.parse(text)
    with open(stubs, "w", encoding="utf-8") as file:
        file.write(text)


main(*sys.argv[1:])
