"""The examples of docs/python.md, and its table of functions."""

import doctest
import pathlib
import re

import direct
import kor

PAGE = (pathlib.Path(__file__).resolve().parents[3] / "docs/python.md").read_text()


def test_examples():
    examples = "\n".join(re.findall(r"```python\n(.*?)```", PAGE, re.DOTALL))
    test = doctest.DocTestParser().get_doctest(examples, {}, "docs/python.md", None, 0)
    assert len(test.examples) > 40
    told = []
    doctest.DocTestRunner().run(test, out=told.append)
    assert not told, "".join(told)


def test_table_names_every_function_once():
    table = PAGE[PAGE.index("## What each function is of the library") :]
    names = re.findall(r"`(Kor\w+)`", table)
    assert sorted(names) == sorted(direct.FUNCTIONS)
    column = "".join(line.split("|")[1] for line in table.splitlines() if line.startswith("| `"))
    python = re.findall(r"`(\w+)`", column)
    functions = {name for name in kor.__all__ if callable(getattr(kor, name)) and name[0].islower()}
    assert sorted(python) == sorted(functions - {"convert", "target", "targets", "select_target"})


def test_every_function_has_a_docstring():
    for name in kor.__all__:
        assert name.startswith("_") or getattr(kor, name).__doc__
