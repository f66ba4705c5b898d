"""Functions on several threads: same results, and the interpreter goes on meanwhile."""

import concurrent.futures
import threading
import time

import numpy as np

import kor
from frames import noise, picture, same


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
    source = picture(kor.I420, np.random.default_rng(10), 4000, 4000)
    out = np.zeros((4000, 4000, 4), np.uint8)  # touched, so that no time goes into fetching pages
    begin, end = [], []

    def convert():
        for _ in range(20):
            begin.append(time.perf_counter())
            kor.i420_to_bgra(source, out=out)
            end.append(time.perf_counter())

    thread = threading.Thread(target=convert)
    thread.start()
    ticks = []
    while thread.is_alive():
        ticks.append(time.perf_counter())
    # At least one call had this thread running in its middle half.
    times = np.array(ticks)
    quarters = [(b + (e - b) / 4, e - (e - b) / 4) for b, e in zip(begin, end)]
    assert any(np.any((times > b) & (times < e)) for b, e in quarters)
