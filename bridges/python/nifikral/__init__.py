"""Effects on pictures in NumPy arrays, and frames of menus, slideshows and titles.

    >>> import numpy, nifikral
    >>> picture = numpy.full((90, 160, 3), 200, numpy.uint8)
    >>> painted = nifikral.apply(picture, "oilpainting", brushsize=4)
    >>> painted.shape, painted.dtype
    ((90, 160, 3), dtype('uint8'))

A picture is an array of uint8, height x width, or height x width x 1, 3 or 4, with any strides. The channels are red,
green, blue and alpha; programs whose pictures are blue, green, red, as OpenCV's are, set `nifikral.order = "bgr"` once.
`nifikral.effects()` lists the effects.
"""

import functools as _functools
import json as _json
import numbers as _numbers
import os as _os

import numpy as _numpy

from . import _nifikral
from ._errors import Error, FileError, UsageError

__all__ = ["Chain", "Effect", "Error", "FileError", "Frames", "UsageError", "apply", "effects", "menu", "slideshow", "title"]
__version__ = _nifikral.version

#: Of an array's channels: "rgb" or "bgr". Read when an object is made that is given no order of its own.
order = "rgb"


def _order(own):
    name = order if own is None else own
    if name not in ("rgb", "bgr"):
        raise ValueError(f'order is {name!r}; there are "rgb" and "bgr"')
    return _nifikral.Order.rgb if name == "rgb" else _nifikral.Order.bgr


def _text(owner, name, value):
    if isinstance(value, str):
        return value
    if isinstance(value, (bool, _numpy.bool_, _numbers.Integral)):
        return str(int(value))
    if isinstance(value, _numbers.Real):
        return repr(float(value))
    raise TypeError(f"{owner}: {name} is a number or a text, and not {type(value).__name__}")


def _asked(name, parameters):
    if not isinstance(name, str):
        raise TypeError(f"an effect is named by a text, and not by {type(name).__name__}")
    return name, [(key, _text(name, key, value)) for key, value in parameters.items()]


class Parameter:
    """A parameter of an effect: `name`, `type`, `meaning`, `unit`, what it is by `default`, the `range` of what makes
    sense as (low, high), each None where it has no end, and `choices`, meanings by values."""

    def __init__(self, row):
        self.name, self.type, self.meaning = row["short"], row["type"], row["meaning"]
        self.default = row.get("start", row.get("initial", row["default"]))
        self.unit, self.keyframable = row.get("unit", ""), row["keyframable"]
        limits = row.get("sensible", {})
        self.range = limits.get("minimum"), limits.get("maximum")
        self.choices = {choice["value"]: choice["meaning"] for choice in row.get("choices", ())}

    def __str__(self):
        low, high = self.range
        values = ", ".join(f"{value} {meaning}" for value, meaning in self.choices.items())
        if not values and low is not None and high is not None:
            values = f"{low} to {high} {self.unit}".rstrip()
        return f"{self.name} ({self.type}, default {self.default}): {self.meaning}" + (f"; {values}" if values else "")

    def __repr__(self):
        return f"<nifikral.Parameter {self}>"


class EffectInfo:
    """What is known of an effect: `name`, `category`, `summary`, other words for it in `synonyms`, its `traits`, and its
    `parameters` by their names."""

    def __init__(self, row):
        self.name, self.category, self.summary = row["name"], row["category"], row["summary"]
        self.synonyms, self.traits = tuple(row["synonyms"]), frozenset(row["traits"])
        self.parameters = {parameter["short"]: Parameter(parameter) for parameter in row["parameters"]}

    def __str__(self):
        return "\n  ".join([f"{self.name}: {self.summary}", *map(str, self.parameters.values())])

    def __repr__(self):
        return f"<nifikral.EffectInfo {self.name}: {self.summary}>"


@_functools.lru_cache(maxsize=None)
def _catalogue():
    return {row["name"]: EffectInfo(row) for row in _json.loads(_nifikral.catalogue())["effects"]}


def effects(query=""):
    """The effects by their names; with a query, those whose name, summary or synonyms mention it.

        >>> print(effects()["oilpainting"])  # doctest: +ELLIPSIS
        oilpainting: an oil painting
          brushsize (int32, default 3): radius of the brush; 0 to 20 pixels
          coarseness (int32, default 50): number of brightness classes less one; 0 to 255
          duration (int32, default 1): length of the effect; ...
        >>> list(effects("swirl"))
        ['rotate']
    """
    wanted = query.casefold()
    return {name: info for name, info in _catalogue().items()
            if any(wanted in text.casefold() for text in (name, info.summary, *info.synonyms))}


class _Effects(_nifikral.Chain):
    def __init__(self, asked, order, rate):
        self._made = (asked, order, rate)
        super().__init__(asked, _order(order), float(rate))

    def __reduce__(self):
        return _remade, (type(self), self._made)

    def __repr__(self):
        requests = ", ".join(repr(":".join([name, *map("=".join, pairs)])) for name, pairs in self._made[0])
        return f"nifikral.{type(self).__name__}({requests})"


def _remade(kind, made):
    effects = kind.__new__(kind)
    _Effects.__init__(effects, *made)
    return effects


class Effect(_Effects):
    """An effect that is called on one picture after another.

        >>> import numpy
        >>> swirl = Effect("rotate", x=80, y=45, r=40, scale=2)
        >>> frames = numpy.zeros((3, 90, 160, 4), numpy.uint8)
        >>> for frame in frames:
        ...     result = swirl(frame)            # a new array
        ...     result = swirl(frame, out=frame) # in place

    Parameters are what `effects()[name].parameters` lists. A value is a number, or a text as the command nifikral takes
    it: "50%" of the picture, "0..8" over the duration, "@0:1,25:3" for key points. `name` may be a whole request of the
    command too, such as "rotate:x=50%:scale=2". `inside` or `outside`, such as "circle,50%,50%,20%" or the file of a
    picture, is where the effect shows, and `soft` how gradually.

    A call without `position` works on the frame that follows the last one; `position` counts from 0. Fades need
    `duration`, in frames. `rate` is that of frames a second, where times are in seconds.

    A planar picture is a tuple of its planes, height x width each: luma, two of chroma, and alpha where there is one.

    Calls from several threads run one after another; one object for each thread works at the same time.
    """

    def __init__(self, name, /, *, order=None, rate=25, **parameters):
        super().__init__([_asked(name, parameters)], order, rate)


class Chain(_Effects):
    """Effects, one after another, as one.

        >>> import numpy
        >>> aged = Chain("aged_film", Effect("addnoise", strength=12), "simple_gauss_blur:count=1")
        >>> aged(numpy.zeros((90, 160, 3), numpy.uint8)).shape
        (90, 160, 3)
    """

    def __init__(self, *effects, order=None, rate=25):
        asked = []
        for effect in effects:
            asked += effect._made[0] if isinstance(effect, _Effects) else [_asked(effect, {})]
        super().__init__(asked, order, rate)


def apply(picture, effect, /, *, out=None, position=0, order=None, **parameters):
    """Returns a picture under an effect: a new array, or `out`, which may be the picture itself.

        >>> import numpy
        >>> int(apply(numpy.full((2, 2), 40, numpy.uint8), "invert")[0, 0])
        215
        >>> apply(numpy.zeros((2, 2), numpy.uint8), "oilpaint")
        Traceback (most recent call last):
        nifikral.UsageError: there is no effect "oilpaint"; did you mean oilpainting? (nifikral list shows all)

    `effect` is a name with its parameters, as Effect takes it, or an Effect or a Chain.
    """
    if not isinstance(effect, _Effects):
        effect = Effect(effect, order=order, **parameters)
    elif parameters or order is not None:
        raise TypeError("an effect that is made already takes no parameters")
    return effect(picture, out=out, position=position)


class Frames:
    """The frames of a menu, a slideshow or a title: `len`, `width`, `height`, `rate` in frames a second, and each of them
    as an array by iterating. Where `seeks` is true, they can be indexed and sliced."""

    def __init__(self, open, channels, order):
        if channels not in (3, 4):
            raise ValueError(f"channels is {channels!r}; there are 3 and 4")
        self._open, self._shape = open, (channels, _order(order))
        self._film = self._unused = film = open()
        self.width, self.height, self.rate, self.seeks = film.width, film.height, film.rate, film.seeks

    def __len__(self):
        return self._film.count

    def __iter__(self):
        film = self._film
        if not self.seeks:
            film, self._unused = self._unused or self._open(), None
        return (film.frame(number, *self._shape) for number in range(len(self)))

    def __getitem__(self, index):
        if not self.seeks:
            raise TypeError("these frames are made one after another; iterate over them")
        if isinstance(index, slice):
            return [self[number] for number in range(*index.indices(len(self)))]
        count = len(self)
        number = index + count if index < 0 else index
        if not 0 <= number < count:
            raise IndexError(f"there are frames 0 to {count - 1}, and no {index}")
        return self._film.frame(number, *self._shape)


def _set(options, values):
    for name, value in values.items():
        if value is not None:
            setattr(options, name, value)
    return options


def menu(project, template=None, *, page=1, channels=3, order=None):
    """The frames of the menu that a project file describes, as `nifikral menu` makes them."""
    project, template = _os.fspath(project), template or ""
    return Frames(lambda: _nifikral.menu(project, template, page), channels, order)


def slideshow(pictures, *, size=(1920, 1080), rate=25, seconds=4, transition=1, transitions=None, motions=None,
              motion_amount=15, fit="blur", captions="", sort="given", seed=0, strict=False, channels=3, order=None):
    """The frames of a slideshow of pictures and films: paths of files and folders, in the order that `sort` names
    ("given", "name", "date" or "random")."""
    pictures = [pictures] if isinstance(pictures, (str, _os.PathLike)) else pictures
    options = _set(_nifikral.SlideshowOptions(), dict(
        pictures=[_os.fspath(path) for path in pictures], size="{}x{}".format(*size), rate=str(rate), seconds=seconds,
        transition=transition, transitions=transitions, motions=motions, motion_amount=motion_amount, fit=fit,
        captions=captions, sort=sort, seed=seed, strict=strict))
    return Frames(lambda: _nifikral.slideshow(options), channels, order)


class _Title:
    seeks = True

    def __init__(self, options, picture, count, rate, order):
        self._draw = _nifikral.title(options, count, rate, order)
        self.height, self.width = picture.shape[:2]
        self._picture, self.count, self.rate = picture, count, rate

    def frame(self, number, channels, order):
        return self._draw(self._picture, position=number)


def title(text, *, over=None, size=(1920, 1080), seconds=5, rate=25, place="middle", face="", style="", color="",
          font_size=0, in_seconds=0.8, out_seconds=0.8, in_motion="", out_motion="", order=None):
    """The frames of a title, over a picture or over black."""
    if over is None:
        over = _numpy.zeros((size[1], size[0], 3), _numpy.uint8)
    options = _set(_nifikral.TitleOptions(), dict(
        text=text, face=face, style=style, color=color, size=font_size, place=place, in_motion=in_motion,
        out_motion=out_motion, in_seconds=in_seconds, out_seconds=out_seconds))
    count = max(1, round(seconds * rate))
    return Frames(lambda: _Title(options, over, count, rate, _order(order)), 3, order)
