"""Watches windows come up on a display and asks them whether they are still answering."""
from __future__ import annotations

import ctypes
import select
import time
from typing import Optional, Sequence

# Of the root window: windows that come up, and what is sent to it.
_NOTIFY_MASKS = 1 << 19 | 1 << 17
_UNMAP_NOTIFY = 18
_MAP_NOTIFY = 19
_CLIENT_MESSAGE = 33


class _ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("sent", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("message_type", ctypes.c_ulong),
                ("format", ctypes.c_int), ("data", ctypes.c_long * 5)]


class _Shown(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("sent", ctypes.c_int),
                ("display", ctypes.c_void_p), ("event", ctypes.c_ulong), ("window", ctypes.c_ulong)]


class _Event(ctypes.Union):
    _fields_ = [("type", ctypes.c_int), ("client", _ClientMessage), ("shown", _Shown), ("room", ctypes.c_long * 24)]


# By default an answer to the last ping of a program that has just ended would end this one too.
@ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p)
def _ignore_error(_display, _error):
    return 0


def _library() -> ctypes.CDLL:
    library = ctypes.CDLL("libX11.so.6")
    display = ctypes.c_void_p
    library.XOpenDisplay.restype = display
    library.XDefaultRootWindow.argtypes = [display]
    library.XDefaultRootWindow.restype = ctypes.c_ulong
    library.XInternAtom.argtypes = [display, ctypes.c_char_p, ctypes.c_int]
    library.XInternAtom.restype = ctypes.c_ulong
    library.XSelectInput.argtypes = [display, ctypes.c_ulong, ctypes.c_long]
    library.XSendEvent.argtypes = [display, ctypes.c_ulong, ctypes.c_int, ctypes.c_long, ctypes.POINTER(_Event)]
    library.XNextEvent.argtypes = [display, ctypes.POINTER(_Event)]
    for name in ("XSync", "XPending", "XConnectionNumber", "XCloseDisplay"):
        getattr(library, name).argtypes = [display, ctypes.c_int][:2 if name == "XSync" else 1]
    library.XSetErrorHandler(_ignore_error)
    return library


class WindowWatch:
    """Runs while the `with` block does, on a display without a window manager. Raises OSError without one or libX11."""

    def __init__(self, display: str):
        self._x = _library()
        self._display = self._x.XOpenDisplay(display.encode())
        if not self._display:
            raise OSError(f"no display {display}")
        self._root = self._x.XDefaultRootWindow(self._display)
        self._protocols, self._ping = (self._x.XInternAtom(self._display, name, 0)
                                       for name in (b"WM_PROTOCOLS", b"_NET_WM_PING"))
        self._x.XSelectInput(self._display, self._root, _NOTIFY_MASKS)
        self._x.XSync(self._display, 0)
        self._serial = 0

    def __enter__(self) -> WindowWatch:
        return self

    def __exit__(self, *_) -> None:
        self._x.XCloseDisplay(self._display)

    def wait_for_window(self, seconds: float = 30) -> int:
        """The next window that comes on screen. Raises TimeoutError."""
        event = self._next([_MAP_NOTIFY], time.monotonic() + seconds)
        if event is None:
            raise TimeoutError("no window came up")
        return event.shown.window

    def ping(self, window: int, seconds: float = 30) -> Optional[float]:
        """Asks the window's event loop, as window managers do; the seconds until it answered.

        None if it never did, or if the window left the screen.
        """
        self._serial += 1
        event = _Event()
        event.client.type, event.client.window, event.client.message_type = _CLIENT_MESSAGE, window, self._protocols
        event.client.format = 32
        event.client.data[0], event.client.data[1], event.client.data[2] = self._ping, self._serial, window
        start = time.monotonic()
        self._x.XSendEvent(self._display, window, 0, 0, ctypes.byref(event))
        while answer := self._next([_CLIENT_MESSAGE, _UNMAP_NOTIFY], start + seconds):
            if answer.type == _UNMAP_NOTIFY and answer.shown.window == window:
                return None
            if answer.type == _CLIENT_MESSAGE and list(answer.client.data)[:2] == [self._ping, self._serial]:
                return time.monotonic() - start
        return None

    def _next(self, kinds: Sequence[int], deadline: float) -> Optional[_Event]:
        event = _Event()
        while True:
            self._x.XSync(self._display, 0)
            while self._x.XPending(self._display):
                self._x.XNextEvent(self._display, ctypes.byref(event))
                if event.type in kinds:
                    return event
            left = deadline - time.monotonic()
            if left <= 0:
                return None
            select.select([self._x.XConnectionNumber(self._display)], [], [], left)
