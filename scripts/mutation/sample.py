"""Chooses mutants: so many of each file as are its share of all mutable places, and always the same ones."""

import hashlib
from collections import defaultdict


def rank(seed, mutant):
    """A number that is as good as random, and the same in each run."""
    return hashlib.sha256(f"{seed} {mutant.id}".encode()).digest()


def shares(sizes, count):
    """How many of `count` each file gives, in proportion to its size; at least one of each as long as there are enough.
    """
    total = sum(sizes.values())
    if count >= total:
        return dict(sizes)
    given = {file: min(size, max(1 if count >= len(sizes) else 0, size * count // total))
             for file, size in sizes.items()}
    by_remainder = sorted(sizes, key=lambda file: (-(sizes[file] * count % total), file))
    while sum(given.values()) < count:
        for file in by_remainder:
            if sum(given.values()) < count and given[file] < sizes[file]:
                given[file] += 1
    while sum(given.values()) > count:
        given[max(given, key=lambda file: (given[file], file))] -= 1
    return given


def choose(mutants, count, seed):
    """A sample of `count`, in the order of their places; a smaller one with the same seed lies within it, nearly."""
    by_file = defaultdict(list)
    for mutant in mutants:
        by_file[mutant.file].append(mutant)
    given = shares({file: len(found) for file, found in by_file.items()}, count)
    chosen = []
    for file, found in by_file.items():
        kept = set(sorted(found, key=lambda mutant: rank(seed, mutant))[:given[file]])
        chosen += [mutant for mutant in found if mutant in kept]
    return chosen
