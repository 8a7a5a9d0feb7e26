#!/usr/bin/env python3
"""Builds the fuzzers' starting corpus from development pages.

Each page is minimised so that the corpus stays small while keeping the
markup the extraction reacts to: script, style, svg and noscript bodies
and comments are dropped, runs of white space are collapsed, long
attribute values are cut, and the page is cut at a tag boundary after
`--max-bytes`. The pages are chosen evenly over the sizes of each source
folder, so that small test pages and large real ones are both represented.

Usage: make_fuzz_corpus.py --readability DIR --snippets DIR --out DIR
"""
import argparse
import gzip
import os
import re

DROPPED = re.compile(rb'<(script|style|svg|noscript)\b[^>]*>.*?</\1\s*>', re.S | re.I)
COMMENT = re.compile(rb'<!--.*?-->', re.S)
SPACE = re.compile(rb'\s+')
LONG_VALUE = re.compile(rb'="([^"]{60})[^"]*"')


def minimise(page, max_bytes):
    page = DROPPED.sub(b'', page)
    page = COMMENT.sub(b'', page)
    page = SPACE.sub(b' ', page)
    page = LONG_VALUE.sub(rb'="\1"', page)
    if len(page) > max_bytes:
        cut = page.rfind(b'>', 0, max_bytes)
        page = page[:cut + 1 if cut > 0 else max_bytes]
    return page


def evenly(paths, count):
    paths = sorted(paths, key=os.path.getsize)
    if len(paths) <= count:
        return paths
    step = len(paths) / count
    return [paths[int(i * step)] for i in range(count)]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('--readability', required=True)
    parser.add_argument('--snippets', required=True)
    parser.add_argument('--out', required=True)
    parser.add_argument('--readability-pages', type=int, default=26)
    parser.add_argument('--snippet-pages', type=int, default=14)
    parser.add_argument('--max-bytes', type=int, default=6000)
    args = parser.parse_args()
    os.makedirs(args.out, exist_ok=True)
    readability = [os.path.join(args.readability, d, 'source.html') for d in os.listdir(args.readability)]
    snippets = [os.path.join(args.snippets, f) for f in os.listdir(args.snippets) if f.endswith('.html.gz')]
    for path in evenly(readability, args.readability_pages):
        name = 'dev-' + os.path.basename(os.path.dirname(path)) + '.html'
        with open(path, 'rb') as f:
            page = f.read()
        with open(os.path.join(args.out, name), 'wb') as f:
            f.write(minimise(page, args.max_bytes))
    for path in evenly(snippets, args.snippet_pages):
        name = 'snippet-' + os.path.basename(path)[:8] + '.html'
        with gzip.open(path, 'rb') as f:
            page = f.read()
        with open(os.path.join(args.out, name), 'wb') as f:
            f.write(minimise(page, args.max_bytes))


if __name__ == '__main__':
    main()
