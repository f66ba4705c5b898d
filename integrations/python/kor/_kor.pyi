from typing import Any, Callable, List, Optional, Sequence, Tuple

__version__: str

def run(
    function: str,
    planes: Sequence[Any],
    width: int,
    height: int,
    *,
    angle: int = ...,
    level: int = ...,
    matrix: Optional[Sequence[Sequence[int]]] = ...,
    starts: Optional[Tuple[int, int, int]] = ...,
    randomize: bool = ...,
    in_place: bool = ...,
    at: Tuple[int, int] = ...,
    alpha: int = ...,
) -> None: ...
def functions() -> List[str]: ...
def target() -> str: ...
def targets() -> List[str]: ...
def select_target(name: Optional[str]) -> bool: ...
def verify(call: Callable[..., bool]) -> Tuple[List[str], int, int, int]: ...
