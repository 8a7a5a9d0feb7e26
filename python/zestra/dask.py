"""Extraction over many web archives on a Dask cluster.

    from dask.distributed import Client
    import zestra.dask

    client = Client()   # a local cluster; Client("tcp://scheduler:8786") for a real one
    zestra.dask.extract_warcs(["a.warc.gz", "b.warc.gz"]).map(json.dumps).to_textfiles("out/*.jsonl")

The bag runs on whatever cluster the current ``dask.distributed.Client``
points at; every worker needs zestra installed and the archives at the same
paths (a shared file system).
"""

import os
import zlib

import dask.bag

import zestra

# Bytes read at a time while looking for the start of a gzip member.
_SCAN_BYTES = 1 << 16


def _member_start(file, offset):
    """The offset of the first gzip member at or after ``offset`` that
    holds the start of a WARC record; None when there is none."""
    file.seek(offset)
    data = file.read(_SCAN_BYTES)
    while data:
        at = data.find(b"\x1f\x8b\x08")
        while at >= 0:
            file.seek(offset + at)
            try:
                head = zlib.decompressobj(31).decompress(file.read(_SCAN_BYTES), 5)
            except zlib.error:
                head = b""
            if head == b"WARC/":
                return offset + at
            at = data.find(b"\x1f\x8b\x08", at + 1)
        offset += max(len(data) - 2, 1)
        file.seek(offset)
        data = file.read(_SCAN_BYTES)
    return None


def _ranges(path, partition_bytes):
    """[start, end) byte ranges of about ``partition_bytes`` each that split
    the archive at ``path`` between records: only an archive compressed
    per record can be split; any other is one range."""
    size = os.path.getsize(path)
    if partition_bytes is None or size <= partition_bytes:
        return [(0, None)]
    with open(path, "rb") as file:
        if file.read(2) != b"\x1f\x8b":
            return [(0, None)]
        starts = [0]
        while starts[-1] + partition_bytes < size:
            start = _member_start(file, starts[-1] + partition_bytes)
            if start is None or start == starts[-1]:
                break
            starts.append(start)
    return list(zip(starts, starts[1:] + [None]))


def _extract_part(part, layout, charset, whole):
    return [zestra.result_dict(result)
            for path, start, end in part
            for result in zestra.extract_warc(path, layout=layout, charset=charset, whole=whole,
                                              start=start, end=end)]


def extract_warcs(paths, *, layout="blocks", charset=None, whole=False, partition_bytes=None):
    """A Dask bag of the pages of the web archives ``paths``, in their
    order: one partition per archive, or with ``partition_bytes`` one per
    range of about that many bytes of an archive compressed per record (it
    is split between records). Each element is a dict with the keys of
    ``zestra extract``'s JSON Lines (url, warc_record_id, date, title, type,
    charset, layout, text). A bad archive makes the computation fail with
    zestra.WarcError."""
    if isinstance(paths, (str, bytes, os.PathLike)):
        paths = [paths]
    paths = [os.fspath(path) for path in paths]
    zestra.extract(b"", layout=layout, charset=charset)  # raises for bad options before any task runs
    parts = [(path, start, end) for path in paths for start, end in _ranges(path, partition_bytes)]
    return dask.bag.from_sequence(parts, npartitions=max(len(parts), 1)).map_partitions(
        _extract_part, layout, charset, whole)
