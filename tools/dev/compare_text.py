#!/usr/bin/env python3
"""Differential check of extracted text over the development pages.

Runs a zestra binary over the page sets in each layout and compares its
text, page by page, with a saved folder of earlier output or with the
output of a second binary. Prints, per set and layout, the share of pages
whose text is identical, and for each differing page a compact summary:
how many lines differ and the first differing lines of both sides, so that
a person can find the markup behind each difference.

    # save the output of today's build as the reference
    tools/dev/compare_text.py --zestra build/tools/zestra --save /tmp/ref

    # compare another build with it
    tools/dev/compare_text.py --zestra other/build/tools/zestra --baseline /tmp/ref

    # or two binaries directly
    tools/dev/compare_text.py --zestra new/zestra --against old/zestra

A saved folder holds LAYOUT/SET/<page path below the set>.txt, as
`zestra extract --out-dir` writes it. Exit status: 0 when every page is
identical, 1 when some differ, 2 on a usage or run error.
"""

import argparse
import difflib
import os
import subprocess
import sys
import tempfile



def default_devset():
    """../shared/devset beside the repository, looked for upwards (a
    worktree may sit deeper than the main checkout)."""
    folder = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    while True:
        candidate = os.path.join(os.path.dirname(folder), "shared", "devset")
        if os.path.isdir(candidate) or os.path.dirname(folder) == folder:
            return candidate
        folder = os.path.dirname(folder)


DEVSET = default_devset()
SETS = ("readability", "snippets")
LAYOUTS = ("blocks", "tables")


def run_zestra(binary, layout, set_dir, out_dir, jobs):
    """Extracts every page below set_dir into out_dir, one .txt per page."""
    command = [binary, "extract", "--layout", layout, "--quiet", "--jobs", str(jobs), "--out-dir", out_dir, set_dir]
    result = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    # Status 1 means some pages failed; they show as missing output.
    if result.returncode not in (0, 1):
        sys.exit("compare_text: %s failed (status %d): %s" % (" ".join(command), result.returncode, result.stderr))
    for line in result.stderr.splitlines():
        print("  %s: %s" % (layout, line), file=sys.stderr)


def page_texts(folder):
    """Maps each page's path below folder to its text; bytes, as written."""
    texts = {}
    for root, _, files in os.walk(folder):
        for name in files:
            if name.endswith(".txt"):
                path = os.path.join(root, name)
                with open(path, "rb") as f:
                    texts[os.path.relpath(path, folder)] = f.read()
    return texts


def shorten(line, width):
    line = line.decode("utf-8", "replace")
    return line if len(line) <= width else line[: width - 3] + "..."


def summarise(page, old, new, lines_shown, width):
    """A few lines saying how new differs from old."""
    old_lines = old.split(b"\n")
    new_lines = new.split(b"\n")
    matcher = difflib.SequenceMatcher(None, old_lines, new_lines, autojunk=False)
    changes = [op for op in matcher.get_opcodes() if op[0] != "equal"]
    removed = sum(i2 - i1 for _, i1, i2, _, _ in changes)
    added = sum(j2 - j1 for _, _, _, j1, j2 in changes)
    out = ["  %s: %d bytes -> %d, %d hunks, -%d +%d lines" % (page, len(old), len(new), len(changes), removed, added)]
    shown = 0
    for _, i1, i2, j1, j2 in changes:
        if shown >= lines_shown:
            break
        out.append("    @ line %d" % (i1 + 1))
        for line in old_lines[i1 : min(i2, i1 + 2)]:
            out.append("    - " + shorten(line, width))
        for line in new_lines[j1 : min(j2, j1 + 2)]:
            out.append("    + " + shorten(line, width))
        shown += 1
    return out


def compare(reference, candidate, args):
    """Prints the summary of one set and layout; returns (same, pages)."""
    pages = sorted(set(reference) | set(candidate))
    same = 0
    details = []
    for page in pages:
        old = reference.get(page)
        new = candidate.get(page)
        if old == new:
            same += 1
        elif old is None or new is None:
            details.append("  %s: no output %s" % (page, "in the reference" if old is None else "from the binary"))
        else:
            details.append(summarise(page, old, new, args.hunks, args.width))
    return same, pages, details


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--zestra", required=True, help="the zestra binary to check")
    source = parser.add_mutually_exclusive_group(required=True)
    source.add_argument("--baseline", metavar="DIR", help="a folder saved with --save")
    source.add_argument("--against", metavar="BINARY", help="a second zestra binary as the reference")
    source.add_argument("--save", metavar="DIR", help="only save the binary's output in DIR")
    parser.add_argument("--devset", default=DEVSET, help="folder holding the sets (default: %(default)s)")
    parser.add_argument("--sets", default=",".join(SETS), help="comma-separated sets (default: %(default)s)")
    parser.add_argument("--layouts", default=",".join(LAYOUTS), help="comma-separated layouts (default: %(default)s)")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1, help="pages in parallel")
    parser.add_argument("--show", type=int, default=20, help="differing pages summarised per set and layout")
    parser.add_argument("--hunks", type=int, default=2, help="differing places shown per page")
    parser.add_argument("--width", type=int, default=110, help="characters shown per line")
    parser.add_argument("--keep", metavar="DIR", help="keep the binary's output in DIR (default: a temporary folder)")
    args = parser.parse_args()

    sets = [s for s in args.sets.split(",") if s]
    layouts = [l for l in args.layouts.split(",") if l]
    with tempfile.TemporaryDirectory(prefix="compare_text.") as scratch:
        out_root = args.save or args.keep or os.path.join(scratch, "candidate")
        ref_root = args.baseline or os.path.join(scratch, "reference")
        any_different = False
        for layout in layouts:
            for name in sets:
                set_dir = os.path.join(args.devset, name)
                run_zestra(args.zestra, layout, set_dir, os.path.join(out_root, layout, name), args.jobs)
                if args.save:
                    continue
                if args.against:
                    run_zestra(args.against, layout, set_dir, os.path.join(ref_root, layout, name), args.jobs)
                reference = page_texts(os.path.join(ref_root, layout, name))
                if not reference:
                    sys.exit("compare_text: no reference pages under %s" % os.path.join(ref_root, layout, name))
                candidate = page_texts(os.path.join(out_root, layout, name))
                same, pages, details = compare(reference, candidate, args)
                any_different |= same != len(pages)
                print("%-12s %-7s identical %4d of %4d pages (%.1f%%)" %
                      (name, layout, same, len(pages), 100.0 * same / max(1, len(pages))))
                for entry in details[: args.show]:
                    print("\n".join(entry) if isinstance(entry, list) else entry)
                if len(details) > args.show:
                    print("  ... and %d more differing pages" % (len(details) - args.show))
        if args.save:
            print("saved under %s" % args.save)
    return 1 if any_different else 0


if __name__ == "__main__":
    sys.exit(main())
