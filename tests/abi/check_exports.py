#!/usr/bin/env python3
"""Checks that a shared library exports exactly the symbols of its list.

usage: check_exports.py <library.so> <list> [--update]

The list (abi/<name>.symbols) holds one mangled symbol per line, sorted. A
change of the export set must come with a change of the list, so that it
is seen in review; --update rewrites the list from the library.
"""
import subprocess
import sys


def exported(library):
    out = subprocess.run(['nm', '-D', '--defined-only', '--format=posix', library],
                         check=True, capture_output=True, text=True).stdout
    return sorted({line.split()[0] for line in out.splitlines() if line.strip()})


def main():
    library, listing = sys.argv[1], sys.argv[2]
    now = exported(library)
    if '--update' in sys.argv[3:]:
        with open(listing, 'w') as f:
            f.write(''.join(s + '\n' for s in now))
        return 0
    with open(listing) as f:
        listed = [line.strip() for line in f if line.strip()]
    added = sorted(set(now) - set(listed))
    removed = sorted(set(listed) - set(now))
    if not added and not removed:
        print(f'{library}: {len(now)} exported symbols, as listed')
        return 0
    demangle = lambda names: subprocess.run(['c++filt'], input='\n'.join(names), capture_output=True,
                                            text=True).stdout.splitlines() if names else []
    for sign, names in (('+', added), ('-', removed)):
        for mangled, plain in zip(names, demangle(names) or names):
            print(f'{sign} {mangled}  ({plain})')
    print(f'{library}: the exported symbols differ from {listing} (+ exported, not listed; - listed, '
          f'not exported). If the change is meant, run: {sys.argv[0]} {library} {listing} --update')
    return 1


if __name__ == '__main__':
    sys.exit(main())
