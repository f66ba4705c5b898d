"""Functions on several threads: same results, and the interpreter goes on meanwhile."""

import concurrent.futures
import sys
import threading

import numpy as np

import kor
from frames import noise, picture, same
from kor import _kor


def test_threads_do_not_disturb_each_other():
    rng = np.random.default_rng(9)
    frames = [noise(rng, (99, 131, 4)) for _ in range(8)]

    def work(seed):
        planes = kor.bgra_to_i420(frames[seed % 8])
        return kor.i420_to_bgra(planes, dither=seed % 3, rng=seed)

    expected = [work(seed) for seed in range(64)]
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        assert same(pool.map(work, range(64)), expected)


def test_the_interpreter_lock_is_released():
    """Without a switch by force, this thread gets its turn only if the call lets go of the lock."""
    source = picture(kor.I420, np.random.default_rng(10), 4000, 4000)
    out = np.zeros((4000, 4000, 4), np.uint8)  # touched, so that no time goes into fetching pages
    buffers = [*source, out]

    def order():
        events = []

        def convert():
            events.append("begin")
            _kor.run("KorI420ToBGRA", buffers, 4000, 4000)
            events.append("end")

        thread = threading.Thread(target=convert)
        thread.start()
        events.append("meanwhile")
        thread.join()
        return events

    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    try:
        # On a busy machine this thread may wake up too late.
        assert any(order() == ["begin", "meanwhile", "end"] for _ in range(100))
    finally:
        sys.setswitchinterval(interval)
