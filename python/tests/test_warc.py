"""Web archives built from the development pages, read by the tool and by
the Python module."""

import gzip
import re

import pytest

import warc_maker as w
import zestra
from conftest import json_lines, run_tool

# A page whose HTTP charset (windows-1251) differs from its meta tag.
CYRILLIC = ("<html><head><meta charset=\"windows-1252\"><title>\u041f\u0440\u0438\u0432\u0435\u0442</title></head>"
            "<body><p>\u041f\u0440\u0438\u0432\u0435\u0442, \u043c\u0438\u0440! \u042d\u0442\u043e "
            "\u0441\u0442\u0440\u0430\u043d\u0438\u0446\u0430 \u043d\u0430 \u0440\u0443\u0441\u0441\u043a\u043e\u043c "
            "\u044f\u0437\u044b\u043a\u0435.</p></body></html>").encode("windows-1251")


def build_records(page_paths, pages, tmp_path):
    """The records of an archive of every page, and for each HTML record the
    page file and the charset the tool must be given to read it alike."""
    cyrillic_path = tmp_path / "cyrillic.html"
    cyrillic_path.write_bytes(CYRILLIC)
    records = [w.warcinfo(0)]
    expected = []  # (url, page file, charset option)
    for i, (path, body) in enumerate(zip(page_paths, pages)):
        url = f"http://example.org/{path.parent.name}"
        records.append(w.page_record(i + 1, url, body, version="1.1" if i % 2 else "1.0",
                                     chunked=i % 3 == 1, gzipped=i % 4 == 2))
        expected.append((url, path, None))
        if i % 40 == 5:
            records.append(w.page_record(1000 + i, url + "/gone", body, status="404 Not Found"))
            records.append(w.page_record(2000 + i, url + "/logo.png", b"\x89PNG\r\n", content_type="image/png"))
            records.append(w.record("request", [("WARC-Target-URI", url)], b"GET / HTTP/1.1\r\n\r\n"))
    records.append(w.page_record(5000, "http://example.org/cyrillic", CYRILLIC,
                                 content_type="text/html; charset=windows-1251", chunked=True, gzipped=True))
    expected.append(("http://example.org/cyrillic", cyrillic_path, "windows-1251"))
    return records, expected


@pytest.fixture(scope="module")
def archives(page_paths, pages, tmp_path_factory):
    tmp_path = tmp_path_factory.mktemp("archives")
    records, expected = build_records(page_paths, pages, tmp_path)
    paths = {}
    for compression, name in (("record", "per-record.warc.gz"), ("whole", "whole.warc.gz"), ("none", "plain.warc")):
        paths[compression] = tmp_path / name
        w.write_warc(paths[compression], records, compression)
    return paths, expected, records


def test_every_page_reads_as_its_file_does(tool, archives):
    paths, expected, records = archives
    from_files = json_lines(run_tool(tool, "--format", "json", "-q", "-j", "2",
                                     *[path for _, path, charset in expected if charset is None]).stdout)
    by_file = {}
    for record in from_files:
        by_file[record.pop("path")] = record
    for url, path, charset in expected:
        if charset is not None:
            [by_file[str(path)]] = [{key: value for key, value in record.items() if key != "path"}
                                   for record in json_lines(run_tool(tool, "--charset", charset, "--format",
                                                                     "json", path).stdout)]
    skipped = len(records) - 1 - len(expected)
    for compression, archive in paths.items():
        done = run_tool(tool, "-j", "2", archive)
        got = json_lines(done.stdout)
        assert [page["url"] for page in got] == [url for url, _, _ in expected], compression
        for page, (url, path, _) in zip(got, expected):
            assert page.pop("warc_record_id").startswith("<urn:uuid:")
            assert page.pop("date") == "2024-05-01T12:00:00Z"
            assert page.pop("url") == url
            # A page of an archive knows its address, which relative
            # addresses resolve against; its file does not.
            metadata, from_file = page.pop("metadata"), by_file[str(path)]["metadata"]
            for field in ("title", "author", "date_published", "language"):
                assert metadata[field] == from_file[field], (compression, url, field)
            assert page == {k: v for k, v in by_file[str(path)].items() if k != "metadata"}, (compression, url)
        assert got[-1]["charset"] == "windows-1251"
        assert got[-1]["title"] == "\u041f\u0440\u0438\u0432\u0435\u0442"
        summary = done.stderr.decode()
        assert f"1 archive, 0 failed, {len(records)} records, {len(expected)} pages" in summary
        # The same from Python, with the counts.
        in_python = zestra.read_warc(archive)
        assert sum(1 for _ in in_python) == len(expected)
        counts = in_python.counts
        assert (counts["records"], counts["pages"]) == (len(records), len(expected))
        assert counts["skipped_type"] + counts["skipped_status"] + counts["skipped_not_html"] == skipped + 1
        assert counts["skipped_type"] == 1 + skipped // 3
        assert counts["skipped_status"] == counts["skipped_not_html"] == skipped // 3
        assert [zestra.result_dict(result) for result in zestra.extract_warc(archive)] == json_lines(done.stdout)


def test_jobs_keep_the_archive_order_and_stdin_reads_alike(tool, archives):
    paths, _, _ = archives
    one = run_tool(tool, "-j", "1", paths["record"]).stdout
    assert run_tool(tool, "-j", "3", paths["record"]).stdout == one
    assert run_tool(tool, stdin=paths["record"].read_bytes()).stdout == one
    assert run_tool(tool, "-", stdin=paths["none"].read_bytes()).stdout == one
    # A page on standard input is still a page.
    assert run_tool(tool, stdin=b"<title>t</title><p>just a page").stdout == b"just a page\n\n"


def test_conversion_records_refer_to_their_responses(tool, archives):
    paths, expected, _ = archives
    pages = json_lines(run_tool(tool, "-q", paths["whole"]).stdout)
    out = run_tool(tool, "-q", "--format", "warc", paths["whole"]).stdout
    records = out.split(b"WARC/1.1\r\n")[1:]
    assert len(records) == len(expected)
    for record, page in zip(records, pages):
        head, _, rest = record.partition(b"\r\n\r\n")
        fields = dict(line.split(": ", 1) for line in head.decode().split("\r\n"))
        assert fields["WARC-Type"] == "conversion"
        assert fields["Content-Type"] == "text/plain"
        assert fields["WARC-Refers-To"] == page["warc_record_id"]
        assert fields["WARC-Target-URI"] == page["url"]
        assert re.fullmatch(r"<urn:uuid:[0-9a-f]{8}-[0-9a-f]{4}-8[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}>",
                            fields["WARC-Record-ID"])
        length = int(fields["Content-Length"])
        assert rest[:length].decode() == page["text"]
        assert rest[length:] == b"\r\n\r\n"


def test_a_bad_archive_loses_nothing_of_the_others(tool, archives, tmp_path):
    paths, expected, records = archives
    whole = paths["record"].read_bytes()
    last = gzip.compress(records[-1], compresslevel=6, mtime=0)
    assert whole.endswith(last)
    cut = tmp_path / "cut.warc.gz"
    cut.write_bytes(whole[:-len(last) // 2])
    offset = len(whole) - len(last)
    lying = tmp_path / "lying.warc"
    # Its Content-Length says 100 bytes fewer than the block holds.
    length = int(re.search(rb"Content-Length: (\d+)", records[2]).group(1))
    second = records[2].replace(b"Content-Length: %d" % length, b"Content-Length: %d" % (length - 100), 1)
    lying.write_bytes(records[0] + records[1] + second + records[3])

    done = run_tool(tool, "-j", "2", cut, lying, paths["none"], tmp_path / "missing.warc", check=False)
    assert done.returncode == 1
    errors = done.stderr.decode().splitlines()
    assert errors[0] == f"zestra: {cut}: record at byte {offset} (byte {len(b''.join(records[:-1]))} " \
                        "uncompressed): compressed data cut short"
    assert errors[1] == f"zestra: {lying}: record at byte {len(records[0]) + len(records[1])}: " \
                        "the record does not end where its Content-Length says"
    assert errors[2] == f"zestra: cannot read '{tmp_path / 'missing.warc'}': No such file or directory"
    got = json_lines(done.stdout)
    urls = [url for url, _, _ in expected]
    assert [page.get("url") for page in got] == urls[:-1] + [None] + urls[:1] + [None] + urls + [None]
    assert got[len(urls) - 1] == {"path": str(cut), "error": errors[0][len("zestra: "):]}

    with pytest.raises(zestra.WarcError) as raised:
        for _ in zestra.read_warc(cut):
            pass
    assert str(raised.value) == errors[0][len("zestra: "):]
    assert isinstance(raised.value, OSError)
