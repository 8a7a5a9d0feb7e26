"""zestra.dask on a local cluster of two worker processes."""

import os
import pytest

import warc_maker as w
from conftest import json_lines, run_tool

distributed = pytest.importorskip("dask.distributed")
import zestra.dask  # noqa: E402  (needs dask)


def test_bag_equals_the_tools_json_lines_in_order(tool, page_paths, pages, tmp_path):
    paths = []
    for part in range(4):
        records = [w.warcinfo(part)]
        for i in range(part, len(pages), 4):
            records.append(w.page_record(i + 1, f"http://example.org/{page_paths[i].parent.name}", pages[i],
                                         chunked=i % 2 == 0, gzipped=i % 3 == 0))
        paths.append(tmp_path / f"part-{part}.warc.gz")
        w.write_warc(paths[-1], records, "record" if part % 2 == 0 else "whole")
    expected = json_lines(run_tool(tool, "-q", "--layout", "tables", *paths).stdout)
    assert len(expected) == len(pages)

    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None) \
            as cluster, distributed.Client(cluster):
        bag = zestra.dask.extract_warcs(paths, layout="tables")
        assert bag.npartitions == 4
        assert bag.compute() == expected
        # One partition per archive, holding its pages.
        partitions = [part.compute() for part in bag.to_delayed()]
        assert [len(part) for part in partitions] == [len(range(part, len(pages), 4)) for part in range(4)]
        assert partitions[1] == expected[len(partitions[0]):len(partitions[0]) + len(partitions[1])]

        # Archives compressed per record split into byte ranges, between
        # records: the same pages in the same order.
        # A third of the smallest archive: each archive compressed per record
        # splits, whether the pages are the development set or the samples.
        third = max(1, min(os.path.getsize(path) for path in paths) // 3)
        split = zestra.dask.extract_warcs(paths, layout="tables", partition_bytes=third)
        assert split.npartitions > 4
        assert split.compute() == expected

    with pytest.raises(ValueError):
        zestra.dask.extract_warcs(paths, layout="columns")
