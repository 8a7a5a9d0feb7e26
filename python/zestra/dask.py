"""Extraction over many web archives on a Dask cluster.

    from dask.distributed import Client
    import zestra.dask

    client = Client()   # a local cluster; Client("tcp://scheduler:8786") for a real one
    zestra.dask.extract_warcs(["a.warc.gz", "b.warc.gz"]).map(json.dumps).to_textfiles("out/*.jsonl")

The bag runs on whatever cluster the current ``dask.distributed.Client``
points at; every worker needs zestra installed and the archives at the same
paths (a shared file system, or paths fsspec can open there).
"""

import dask.bag

import zestra


def _extract_one(path, layout, charset, whole):
    return [zestra.result_dict(result)
            for result in zestra.extract_warc(path, layout=layout, charset=charset, whole=whole)]


def extract_warcs(paths, *, layout="blocks", charset=None, whole=False):
    """A Dask bag with one partition per web archive of ``paths``, in their
    order; each element is a dict with the keys of ``zestra extract``'s JSON
    Lines (url, warc_record_id, date, title, type, charset, layout, text),
    in archive order. A bad archive makes the computation fail with
    zestra.WarcError."""
    if isinstance(paths, (str, bytes)):
        paths = [paths]
    paths = [str(path) for path in paths]
    zestra.extract(b"", layout=layout, charset=charset)  # raises for bad options before any task runs
    return dask.bag.from_sequence(paths, npartitions=max(len(paths), 1)).map_partitions(
        lambda part: [page for path in part for page in _extract_one(path, layout, charset, whole)])
