#!/usr/bin/env python3
"""Two-fold check of extraction settings on both development sets.

Each development set is split in two halves by a fixed rule (the CRC-32 of
a page's name, even or odd), and every configuration is scored on each half
and on the whole: a change that gains on one half and loses on the other is
fitted to pages, not to the web.

    tools/dev/twofold.py [--zestra build/tools/zestra] \\
        --config base='--prune-steps none' --config new='' [--config ...]

A configuration is a name and the extra arguments of `zestra extract`. The
readability set (../shared/devset/readability) is scored with the shingle
metric of ../shared/eval/score.py, the snippet set (../shared/devset/snippets)
with the snippet metric of ../shared/eval/snippets.py; the pages are
extracted in one batch per set and configuration (-j2).
"""
import argparse
import json
import shlex
import subprocess
import sys
import zlib
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
EVAL = ROOT.parent / "shared" / "eval"
sys.path.insert(0, str(EVAL))
import score  # noqa: E402
import snippets  # noqa: E402

READABILITY = ROOT.parent / "shared" / "devset" / "readability"
SNIPPETS = ROOT.parent / "shared" / "devset" / "snippets"


def half(name):
    """0 or 1: the half a page belongs to, by the CRC-32 of its name."""
    return zlib.crc32(name.encode("utf-8")) & 1


def extract(zestra, args, directory):
    """{path: text} for every page under `directory`."""
    argv = [zestra, "extract", "-q", "-j2", "--format", "json"] + shlex.split(args) + [str(directory)]
    run = subprocess.run(argv, capture_output=True, check=False)
    texts = {}
    for line in run.stdout.decode("utf-8").splitlines():
        record = json.loads(line)
        texts[record["path"]] = record.get("text", "")
    return texts


def readability_scores(texts):
    """[(f1, p, r) for half 0, half 1, all] on the readability set."""
    counts = [[], []]
    for page in sorted(p for p in READABILITY.iterdir() if (p / "source.html").exists()):
        predicted = texts.get(str(page / "source.html"), "")
        expected = (page / "expected.txt").read_text(encoding="utf-8")
        counts[half(page.name)].append(score.page_counts(expected, predicted))
    return [score.summarise(c) for c in (counts[0], counts[1], counts[0] + counts[1])]


def snippet_scores(texts):
    """[(f1, p, r) for half 0, half 1, all] on the snippet set."""
    truth = snippets.load_bench(SNIPPETS)
    by_file = {Path(path).name: text for path, text in texts.items()}
    parts = [{}, {}]
    for url, item in truth.items():
        parts[half(item["file"])][url] = item
    preds = {url: by_file.get(item["file"], "") for url, item in truth.items()}
    result = []
    for subset in (parts[0], parts[1], truth):
        m = snippets.metrics(snippets.count(subset, {u: preds[u] for u in subset}))
        result.append((m["f1"], m["precision"], m["recall"]))
    return result


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--zestra", default=str(ROOT / "build" / "tools" / "zestra"))
    ap.add_argument("--config", action="append", required=True, help="NAME=EXTRA ARGUMENTS")
    args = ap.parse_args()
    print("| config | set | half A F1 (P/R) | half B F1 (P/R) | all F1 (P/R) |")
    print("|---|---|---|---|---|")
    for config in args.config:
        name, _, extra = config.partition("=")
        for set_name, directory, scorer in (("readability", READABILITY, readability_scores),
                                            ("snippets", SNIPPETS / "pages", snippet_scores)):
            cells = [f"{f:.4f} ({p:.3f}/{r:.3f})" for f, p, r in scorer(extract(args.zestra, extra, directory))]
            print(f"| {name} | {set_name} | " + " | ".join(cells) + " |", flush=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
