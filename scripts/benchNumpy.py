"""The rows that NumPy can do too, in its own usual way (results in new arrays), as one round of measurements."""
import json
import re
import sys
import time

import numpy as np

RNG = np.random.default_rng(1)
MIN_SECONDS = 0.02
CURVE = (1_000, 10_000, 100_000, 1_000_000, 10_000_000)
TWO = dict(add=np.add, subtract=np.subtract, multiply=np.multiply, divide=np.divide)
ONE = dict(abs=np.abs, floor=np.floor, ceil=np.ceil, trunc=np.trunc, round=np.round, sqrt=np.sqrt, degrees=np.degrees,
           radians=np.radians)
LIBRARY = dict(sqrt=np.sqrt, cbrt=np.cbrt, sin=np.sin, cos=np.cos, tan=np.tan, asin=np.arcsin, acos=np.arccos,
               atan=np.arctan, sinh=np.sinh, cosh=np.cosh, tanh=np.tanh, exp=np.exp, exp2=np.exp2, expm1=np.expm1,
               log=np.log, log10=np.log10, log2=np.log2, log1p=np.log1p, degrees=np.degrees, radians=np.radians,
               atan2=np.arctan2, pow=np.power, hypot=np.hypot, fmod=np.fmod)
TWO_OPERANDS = {"atan2", "pow", "hypot", "fmod"}


def values(length):
    return RNG.uniform(0.05, 0.95, length)


def nanoseconds(call):
    """Processor time per call, over enough calls to last MIN_SECONDS; one call before them is not counted."""
    call()
    calls = 1
    while True:
        start = time.process_time()
        for _ in range(calls):
            call()
        elapsed = time.process_time() - start
        if elapsed >= MIN_SECONDS:
            return elapsed / calls * 1e9
        calls = max(calls + 1, int(calls * 1.2 * MIN_SECONDS / max(elapsed, 1e-7)))


def rows():
    for name, function in {**TWO, **ONE}.items():
        for length in CURVE if name == "add" else (1_000, 100_000):
            yield f"element-wise/{name}/{length}", function, [values(length) for _ in range(2 if name in TWO else 1)]
    for name, function in LIBRARY.items():
        yield f"library/{name}/100000", function, [values(100_000) for _ in range(1 + (name in TWO_OPERANDS))]
    for length in CURVE:
        yield f"reductions/sum/{length}", np.sum, [values(length)]
        if length <= 1_000_000:
            yield f"reductions/sort/{length}", np.sort, [values(length)]
            yield f"reductions/random/{length}", RNG.random, [length]
    for extent in (64, 256, 512, 1024):
        yield f"matrix/product/{extent}", np.matmul, [values(extent * extent).reshape(extent, extent) for _ in range(2)]


wanted = re.compile(sys.argv[1])
print(json.dumps({"benchmarks": [
    {"name": f"{name}/numpy", "run_type": "iteration", "time_unit": "ns",
     "cpu_time": nanoseconds(lambda: function(*operands))}
    for name, function, operands in rows() if wanted.search(f"{name}/numpy")]}))
