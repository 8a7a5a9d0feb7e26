"""Zestra: the main text of HTML pages, from Python.

    import zestra

    page = zestra.extract(open("page.html", "rb").read())
    print(page.title, page.type, page.charset)
    print(page.text)

    for page in zestra.extract_warc("crawl.warc.gz"):
        print(page.url, len(page.text))

Every extraction releases the GIL, so threads extract in parallel;
``extract_many`` runs its own pool of threads. ``zestra.dask`` runs
extraction over many web archives on a Dask cluster.
"""

import os

from ._zestra import Result, WarcRecord, __version__
from ._zestra import extract as _extract
from ._zestra import extract_many as _extract_many
from ._zestra import extract_record as _extract_record
from ._zestra import WarcIterator as _WarcIterator
from ._zestra import check_options as _check_options

__all__ = ["Result", "WarcRecord", "WarcError", "extract", "extract_many", "read_warc", "extract_warc",
           "result_dict", "__version__"]


class WarcError(OSError):
    """A web archive ends with a truncated or corrupt record. The message
    names the file and the byte offset of the record."""


def extract(html, *, layout="blocks", charset=None, whole=False, format="text", url=None):
    """The main text of one HTML page.

    html: the page, as bytes (in ``charset``, or sniffed as browsers do when
    it is None) or as str. layout: "blocks" (today's pages) or "tables"
    (pages laid out with HTML tables). whole: every text of the page,
    unranked. format: "markdown" or "html" also gives the kept text with its
    structure as Result.formatted. url: the page's address, which relative
    links resolve against. Returns a Result (text, title, type, charset,
    layout, formatted, metadata). Raises TypeError for an html that is
    neither bytes nor str, ValueError for an unknown layout, charset or
    format.
    """
    return _extract(html, layout=layout, charset=charset, whole=whole, format=format, url=url or "")


def extract_many(pages, *, jobs=None, layout="blocks", charset=None, whole=False):
    """The results of ``extract`` for every page of the iterable ``pages``,
    in their order, computed on ``jobs`` threads (default: the number of
    processors)."""
    if jobs is None:
        jobs = os.cpu_count() or 1
    if not isinstance(jobs, int) or isinstance(jobs, bool):
        raise TypeError("jobs must be an int")
    return _extract_many(pages, jobs=jobs, layout=layout, charset=charset, whole=whole)


def read_warc(path, *, start=0, end=None):
    """Yields the HTML pages of the web archive at ``path`` (WARC/1.0 or
    1.1, plain or gzip) as WarcRecord objects: ``response`` and
    ``resource`` records with status 200 whose payload is HTML, with the
    payload decoded. Other records are skipped; the iterator's ``counts``
    says how many of each kind. ``start`` and ``end`` read the part of the
    archive whose records (or their gzip members) start in [start, end);
    ``start`` must be where one starts. Raises OSError when the file cannot
    be opened, WarcError when a record is truncated or corrupt."""
    return _WarcIterator(os.fspath(path), start, (1 << 64) - 1 if end is None else end)


def extract_warc(path, *, layout="blocks", charset=None, whole=False, start=0, end=None):
    """Yields a Result for every page of ``read_warc(path, start=start,
    end=end)``, with its ``url``, ``warc_record_id`` and ``date``. The HTTP
    charset of each page is believed ahead of its meta tags; ``charset``
    overrides both."""
    _check_options(layout, charset)
    records = read_warc(path, start=start, end=end)
    return (_extract_record(record, layout=layout, charset=charset, whole=whole) for record in records)


def result_dict(result):
    """A Result as a dict with the keys of ``zestra extract``'s JSON Lines:
    url, warc_record_id, date (for pages of archives), title, type,
    charset, layout, text, metadata."""
    out = {}
    if result.warc_record_id is not None:
        out["url"] = result.url or ""
        out["warc_record_id"] = result.warc_record_id
        out["date"] = result.date or ""
    out.update(title=result.title, type=result.type, charset=result.charset, layout=result.layout,
               text=result.text, metadata=result.metadata)
    return out
