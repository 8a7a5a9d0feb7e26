"""Shared fixtures: the zestra tool, the development pages and archives
built from them."""

import json
import os
import subprocess
import sys
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parent))

SOURCE_DIR = Path(os.environ.get("ZESTRA_SOURCE_DIR", Path(__file__).resolve().parents[2]))


def _tool():
    tool = os.environ.get("ZESTRA_TOOL", str(SOURCE_DIR / "build" / "tools" / "zestra"))
    if not os.access(tool, os.X_OK):
        pytest.fail(f"the zestra tool is not built: {tool}")
    return tool


def _development_pages():
    """The development set's pages (sorted paths), else the samples."""
    candidates = [os.environ.get("ZESTRA_DEVSET", ""), SOURCE_DIR.parent / "shared/devset/readability",
                  SOURCE_DIR.parent.parent / "shared/devset/readability"]
    for candidate in candidates:
        if candidate and Path(candidate).is_dir():
            pages = sorted(Path(candidate).glob("*/source.html"))
            if pages:
                return pages
    return sorted((SOURCE_DIR / "samples").glob("*.html"))


@pytest.fixture(scope="session")
def tool():
    return _tool()


@pytest.fixture(scope="session")
def page_paths():
    return _development_pages()


@pytest.fixture(scope="session")
def pages(page_paths):
    return [path.read_bytes() for path in page_paths]


def run_tool(tool, *arguments, stdin=None, check=True):
    """Runs `zestra extract ARGUMENTS`; returns the completed process."""
    done = subprocess.run([tool, "extract", *map(str, arguments)], input=stdin, capture_output=True)
    if check and done.returncode != 0:
        raise AssertionError(f"zestra exited with {done.returncode}: {done.stderr.decode(errors='replace')}")
    return done


def json_lines(output):
    return [json.loads(line) for line in output.decode().splitlines()]
