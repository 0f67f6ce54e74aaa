"""Breaks the program in one place at a time and sees which tests notice; called by script/mutants."""

import argparse
from pathlib import Path
import random
import shutil
import subprocess
import sys

from mutate import draw

FOLDERS = ["soap", "process"]
TESTS = ["system_test", "soap_test", "process_test"]
PATIENCE = 180  # seconds for one test program


class Tree:
    """A copy of the sources with a build of its own."""

    def __init__(self, origin, directory):
        self.sources, self.build = directory / "tree", directory / "build"
        shutil.rmtree(self.sources, ignore_errors=True)
        files = subprocess.check_output(["git", "-C", origin, "ls-files", "-z"], text=True).split("\0")
        for name in filter(None, files):
            target = self.sources / name
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(origin / name, target, follow_symlinks=False)  # with new times: an old build is no help
        self._must(["cmake", "-G", "Ninja", "-S", self.sources, "-B", self.build, "-DCMAKE_BUILD_TYPE=Debug",
                    "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON",
                    "-DCMAKE_UNITY_BUILD=OFF"])
        self._must(self._build_command())

    def _build_command(self):
        return ["cmake", "--build", self.build, "-j", "1", "--target", *TESTS]

    def _must(self, command):
        done = subprocess.run(command, capture_output=True, text=True)
        if done.returncode:
            sys.exit(f"{done.stdout}{done.stderr}\nscript/mutants: the tree does not build")

    def read(self):
        files = sorted(path for folder in FOLDERS for path in (self.sources / folder).glob("*.[ch]*"))
        return {str(path.relative_to(self.sources)): path.read_text().split("\n") for path in files}

    def write(self, file, lines):
        (self.sources / file).write_text("\n".join(lines))

    def builds(self):
        return subprocess.run(self._build_command(), capture_output=True).returncode == 0

    def killer(self):
        """The first test program that fails or does not end; empty when all pass."""
        return next(filter(None, map(self._failure, TESTS)), "")

    def _failure(self, test):
        try:
            done = subprocess.run([self.build / "bin" / test, "--gtest_brief=1", "--gtest_fail_fast"],
                                  cwd=self.build, timeout=PATIENCE, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        except subprocess.TimeoutExpired:
            return f"{test}, which did not end in {PATIENCE} s"
        return test if done.returncode else ""


def tried(tree, mutant):
    """The first test program that notices the mutant, empty when none does; None when it does not build."""
    lines = tree.read()[mutant.file]
    tree.write(mutant.file, lines[:mutant.line] + [mutant.after] + lines[mutant.line + 1:])
    killer = tree.killer() if tree.builds() else None
    tree.write(mutant.file, lines)
    return killer


def report(mutant, killer):
    verdict = f"killed by {killer}" if killer else "SURVIVED"
    print(f"{mutant.file}:{mutant.line + 1} ({mutant.kind}): {verdict}\n  - {mutant.before.strip()}\n"
          f"  + {mutant.after.strip()}", flush=True)


def parse_options():
    parser = argparse.ArgumentParser(prog="script/mutants")
    parser.add_argument("count", metavar="COUNT", type=int, nargs="?", default=40)
    parser.add_argument("seed", metavar="SEED", type=int, nargs="?", default=1)
    parser.add_argument("--tree", type=Path, required=True)
    parser.add_argument("--directory", type=Path, required=True)
    return parser.parse_args()


def main():
    options = parse_options()
    tree = Tree(options.tree.resolve(), options.directory)
    if failing := tree.killer():
        sys.exit(f"script/mutants: fails without any mutant: {failing}")
    results = []
    for mutant in draw(random.Random(options.seed), tree.read()):
        killer = tried(tree, mutant)
        if killer is not None:
            report(mutant, killer)
            results.append(killer)
        if len(results) == options.count:
            break
    by_system = sum(killer.startswith("system_test") for killer in results)
    print(f"{len(results)} mutants: {sum(map(bool, results))} killed, {by_system} of them by system_test "
          f"(seed {options.seed})")


if __name__ == "__main__":
    main()
