"""zestra.extract and extract_many against the C++ tool."""

import concurrent.futures
import time

import pytest

import zestra
from conftest import json_lines, run_tool


def without_path(record):
    return {key: value for key, value in record.items() if key != "path"}


@pytest.mark.parametrize("layout", ["blocks", "tables"])
def test_results_equal_the_tools_on_the_development_pages(tool, page_paths, pages, layout):
    expected = json_lines(run_tool(tool, "--format", "json", "-q", "--jobs", "2", "--layout", layout,
                                   *page_paths).stdout)
    assert len(expected) == len(pages)
    for path, html, record in zip(page_paths, pages, expected):
        assert record["path"] == str(path)
        assert zestra.result_dict(zestra.extract(html, layout=layout)) == without_path(record), path


def test_options_and_str_input(tool, page_paths):
    html = page_paths[0].read_bytes()
    expected = json_lines(run_tool(tool, "--format", "json", "--whole", "--charset", "windows-1252",
                                   page_paths[0]).stdout)[0]
    result = zestra.extract(html, whole=True, charset="windows-1252")
    assert zestra.result_dict(result) == without_path(expected)
    assert result.url is None and result.warc_record_id is None and result.date is None

    text = "<title>Caf\u00e9</title><p>Caf\u00e9 cr\u00e8me, \u65e5\u672c\u8a9e\u306e\u6587\u7ae0\u3002</p>"
    from_str = zestra.extract(text)
    from_bytes = zestra.extract(text.encode("utf-8"), charset="utf-8")
    assert from_str.charset == "utf-8"
    assert (from_str.title, from_str.text) == (from_bytes.title, from_bytes.text)
    assert from_str.title == "Caf\u00e9"
    # A str's meta tag cannot change how it is read: it is text already.
    assert zestra.extract('<meta charset="windows-1251"><p>\u00e9</p>').text.startswith("\u00e9")
    assert zestra.extract(bytearray(b"<p>x")).text == zestra.extract(b"<p>x").text
    assert zestra.extract(b"").text == ""


def test_markdown_and_metadata_equal_the_tools(tool, page_paths):
    expected = json_lines(run_tool(tool, "--format", "json", "--with", "markdown", "--url",
                                   "https://example.org/a/page.html", page_paths[0]).stdout)[0]
    result = zestra.extract(page_paths[0].read_bytes(), format="markdown", url="https://example.org/a/page.html")
    assert result.formatted == expected["markdown"]
    assert result.metadata == expected["metadata"]
    assert zestra.extract(b"<p>plain").formatted is None


@pytest.mark.parametrize("call, error, message", [
    (lambda: zestra.extract(42), TypeError, "html must be bytes or str, not int"),
    (lambda: zestra.extract(None), TypeError, "html must be bytes or str, not NoneType"),
    (lambda: zestra.extract(b"", layout="columns"), ValueError, "unknown layout 'columns'"),
    (lambda: zestra.extract(b"", layout=1), TypeError, ""),
    (lambda: zestra.extract(b"", charset="klingon"), ValueError, "unknown charset 'klingon'"),
    (lambda: zestra.extract(b"", charset=1252), TypeError, "charset must be a str or None"),
    (lambda: zestra.extract(b"", format="pdf"), ValueError, "unknown format 'pdf'"),
    (lambda: zestra.extract(b"", "tables"), TypeError, ""),
    (lambda: zestra.extract_many([b"<p>", 3], jobs=2), TypeError, "not int"),
    (lambda: zestra.extract_many([b"<p>"], jobs=0), ValueError, "jobs must be at least 1"),
    (lambda: zestra.extract_many([b"<p>"], jobs="2"), TypeError, "jobs must be an int"),
    (lambda: zestra.extract_many(5, jobs=1), TypeError, ""),
    (lambda: list(zestra.read_warc("/nonexistent/crawl.warc.gz")), FileNotFoundError, "/nonexistent/crawl.warc.gz"),
    (lambda: list(zestra.read_warc("/")), IsADirectoryError, "Is a directory"),
    (lambda: list(zestra.extract_warc("/nonexistent.warc")), FileNotFoundError, "No such file"),
    (lambda: zestra.extract_warc("/nonexistent.warc", layout="x"), ValueError, "unknown layout"),
])
def test_bad_arguments_raise_what_python_users_expect(call, error, message):
    with pytest.raises(error) as raised:
        call()
    assert message in str(raised.value)


def test_extract_many_with_threads_equals_one_by_one(pages):
    mixed = [page if i % 3 else page.decode("utf-8", "replace") for i, page in enumerate(pages)]
    one_by_one = [zestra.result_dict(zestra.extract(page, layout="tables")) for page in mixed]
    for jobs in (1, 2, 7):
        many = zestra.extract_many(iter(mixed), jobs=jobs, layout="tables")
        assert [zestra.result_dict(result) for result in many] == one_by_one, jobs
    assert zestra.extract_many([], jobs=4) == []


def test_extraction_releases_the_gil(pages):
    """Two Python threads extract faster than one. The ratio depends on the
    machine's load, so it is reported, not asserted."""
    def run(threads):
        start = time.perf_counter()
        with concurrent.futures.ThreadPoolExecutor(threads) as pool:
            results = list(pool.map(zestra.extract, pages))
        return time.perf_counter() - start, results

    run(1)  # warm-up
    one, first = run(1)
    two, second = run(2)
    assert [r.text for r in first] == [r.text for r in second]
    print(f"\nGIL: {len(pages)} pages, one thread {one:.2f} s, two threads {two:.2f} s, speed-up {one / two:.2f}")
