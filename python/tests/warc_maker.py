"""Builds WARC files from HTML pages, for the tests and the benchmark.

Each page becomes a `response` record (or a `resource` record) with an HTTP
head; the HTTP body may be chunked or gzip content-encoded, and the archive
written plain, compressed per record, or compressed whole.
"""

import gzip
import io
import uuid
import zlib


def record(warc_type, headers, block, version="1.0"):
    """The bytes of one WARC record with the given header fields and block."""
    lines = [f"WARC/{version}", f"WARC-Type: {warc_type}"]
    lines += [f"{name}: {value}" for name, value in headers]
    lines.append(f"Content-Length: {len(block)}")
    return ("\r\n".join(lines) + "\r\n\r\n").encode() + block + b"\r\n\r\n"


def record_id(number):
    return f"<urn:uuid:{uuid.UUID(int=number)}>"


def http_response(body, status="200 OK", content_type="text/html", chunked=False, gzipped=False, extra=()):
    """The block of a response record: an HTTP/1.1 head and `body`."""
    head = [f"HTTP/1.1 {status}"]
    if content_type is not None:
        head.append(f"Content-Type: {content_type}")
    if gzipped:
        body = gzip.compress(body, mtime=0)
        head.append("Content-Encoding: gzip")
    if chunked:
        head.append("Transfer-Encoding: chunked")
        out = io.BytesIO()
        for start in range(0, len(body), 4000):
            piece = body[start:start + 4000]
            out.write(b"%x\r\n" % len(piece) + piece + b"\r\n")
        out.write(b"0\r\n\r\n")
        body = out.getvalue()
    else:
        head.append(f"Content-Length: {len(body)}")
    head += list(extra)
    return ("\r\n".join(head) + "\r\n\r\n").encode() + body


def page_record(number, url, body, version="1.0", date="2024-05-01T12:00:00Z", **http):
    return record("response", [("WARC-Target-URI", url), ("WARC-Date", date),
                               ("WARC-Record-ID", record_id(number))],
                  http_response(body, **http), version)


def write_warc(path, records, compression="record"):
    """Writes `records` (bytes each) to `path`: compression is "record" (one
    gzip member per record), "whole" (one gzip stream) or "none"."""
    with open(path, "wb") as out:
        if compression == "record":
            for one in records:
                out.write(gzip.compress(one, compresslevel=6, mtime=0))
        elif compression == "whole":
            out.write(gzip.compress(b"".join(records), mtime=0))
        else:
            for one in records:
                out.write(one)


def warcinfo(number=0):
    return record("warcinfo", [("WARC-Date", "2024-05-01T12:00:00Z"), ("WARC-Record-ID", record_id(number)),
                               ("Content-Type", "application/warc-fields")], b"software: warc_maker\r\n")
