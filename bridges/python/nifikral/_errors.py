"""What nifikral raises."""


class Error(Exception):
    """The effect module failed, or could not be loaded. `code` is the module's own, 0 where it has none."""

    code = 0


class UsageError(Error, ValueError):
    """Something that was asked for is wrong: a name, a value, an item of a project. `code` is the module's where the
    effect itself refused the value."""


class FileError(Error, OSError):
    """A file cannot be read."""


for _error in (Error, UsageError, FileError):
    _error.__module__ = "nifikral"
