from os import PathLike
from typing import Iterable, Literal, Optional, Union

import dask.bag

def extract_warcs(paths: Union[str, PathLike[str], Iterable[Union[str, PathLike[str]]]], *,
                  layout: Literal["blocks", "tables"] = "blocks", charset: Optional[str] = None,
                  whole: bool = False, partition_bytes: Optional[int] = None) -> dask.bag.Bag: ...
