"""Work on a thread of its own, so that the thread that waits for it can be interrupted."""

from __future__ import annotations

import signal
import threading
from contextlib import contextmanager
from typing import Callable, Iterator, List, Optional

from .enums import StopRequest

# Seconds. Ctrl-C does not end a wait on Windows.
PAUSE = 0.1


class Worker:
    """An operation under way."""

    def __init__(self, operation: Callable[[], int], request_stop: Callable[[StopRequest], None],
                 on_end: Callable[[], None]) -> None:
        self._operation = operation
        self._request_stop = request_stop
        self._on_end = on_end
        self._requests = 0
        self._result = 0
        self._fault: Optional[BaseException] = None
        # Thread.join() may take a thread for one that has ended if it is interrupted.
        self._ended = threading.Event()
        self._interrupts: List[int] = []
        self._thread = threading.Thread(target=self._work, name="kvreflash")

    def start(self) -> None:
        """Begins with the operation. Ctrl-C is answered like in :meth:`join`."""
        with self._answered_interrupts():
            try:
                self._thread.start()
            except RuntimeError:  # no thread can be made
                self._ended.set()
                raise

    def _work(self) -> None:
        try:
            self._result = self._operation()
        except BaseException as fault:  # pylint: disable=broad-except  # raised where it is waited for
            self._fault = fault
        finally:
            self._ended.set()
            self._on_end()

    @property
    def has_ended(self) -> bool:
        """Whether the operation has ended."""
        return self._ended.is_set()

    @property
    def is_current(self) -> bool:
        """Whether the caller runs on the thread of the operation, within one of its callbacks."""
        return threading.current_thread() is self._thread

    def request_stop(self) -> None:
        """Asks the operation to end; the second time to give up, too. Does nothing if it has ended."""
        if not self.has_ended:
            how = StopRequest.FINISH if self._requests == 0 else StopRequest.GIVE_UP
            self._requests += 1
            self._request_stop(how)

    def join(self) -> None:
        """Waits for the end of the operation. Ctrl-C requests to stop, and KeyboardInterrupt is raised then. Anything
        else that interrupts the wait is raised at once."""
        with self._answered_interrupts():
            while not self._ended.wait(PAUSE):
                pass
        if self._interrupts:
            raise KeyboardInterrupt

    @contextmanager
    def _answered_interrupts(self) -> Iterator[None]:
        """Each Ctrl-C requests to stop, unless the program has its own handler."""
        def answer(number: int, _frame: object) -> None:
            self._interrupts.append(number)
            self.request_stop()

        if threading.current_thread() is not threading.main_thread() or \
                signal.getsignal(signal.SIGINT) is not signal.default_int_handler:
            yield
            return
        signal.signal(signal.SIGINT, answer)
        try:
            yield
        finally:
            signal.signal(signal.SIGINT, signal.default_int_handler)

    def wait(self) -> int:
        """Waits like :meth:`join`; returns the result of the operation, or raises what it has raised."""
        self.join()
        if self._fault is not None:
            raise self._fault
        return self._result
