"""Work on a thread of its own, so that the thread that waits for it can be interrupted."""

from __future__ import annotations

import threading
from typing import Callable, List, Optional

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
        # Thread.join() takes a thread for one that has ended if it is interrupted.
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._work, name="kvreflash")
        self._thread.start()

    def _work(self) -> None:
        try:
            self._result = self._operation()
        except BaseException as fault:  # pylint: disable=broad-except  # raised where it is waited for
            self._fault = fault
        finally:
            self._ended.set()
            self._on_end()

    @property
    def is_current(self) -> bool:
        """Whether the caller runs on the thread of the operation, within one of its callbacks."""
        return threading.current_thread() is self._thread

    def request_stop(self) -> None:
        """Asks the operation to end; the second time to give up, too. Does nothing if it has ended."""
        if not self._ended.is_set():
            how = StopRequest.FINISH if self._requests == 0 else StopRequest.GIVE_UP
            self._requests += 1
            self._request_stop(how)

    def join(self) -> None:
        """Waits for the end of the operation. Whatever interrupts the wait requests to stop and is raised then."""
        interruptions: List[BaseException] = []
        answered = 0
        while not self._ended.is_set():
            try:
                if answered < len(interruptions):
                    answered += 1
                    self.request_stop()
                self._ended.wait(PAUSE)
            except BaseException as interruption:  # pylint: disable=broad-except
                interruptions.append(interruption)
        if interruptions:
            raise interruptions[0]

    def wait(self) -> int:
        """Waits like :meth:`join`; returns the result of the operation, or raises what it has raised."""
        self.join()
        if self._fault is not None:
            raise self._fault
        return self._result
