"""The one error that callers of the package need to catch."""


class ImageError(Exception):
    """The image cannot be made; the message is meant for the person who asked."""
