#!/usr/bin/env python3
"""Failures that a small collect run meets one at a time: failures.py KIND BIN_DIR SOURCE [STRIDE]

KIND is "new" or "libxml2" (an allocation fails; STRIDE 1 tries every one), "files" (an open, read,
write or rename fails) or "interrupt" (SIGINT arrives during a system call). A run may end well with
the same record, or report the failure; nothing else, and no half-written file may stay behind.
"""

import collections
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

CALLS = {"openat": "EACCES", "read": "EIO", "write": "ENOSPC", "rename": "EACCES"}
# What a run passes over without a word when it can't be opened or changed.
PASSED_OVER = re.compile(r"\.clp|/dev/null|passwd|nsswitch|locale|/sys/|/proc/|-journal|-wal")
INTERRUPTED = "\nPreprocessor: caught signal. Cleaning up.\n"
SKIPPED = 77

FWD = "<configuration><framework_definition>{}</framework_definition></configuration>"
DOCUMENTS = {
    "nodes": "node[1-3]\nhead role: head\n",
    "groups.xml": "<nodegroup_config><nodegroup name='g'><nodes><node>node1</node></nodes></nodegroup>"
                  "<fwd name='sub'><nodegroups><group>g</group></nodegroups></fwd></nodegroup_config>",
    "etc/qorn.xml": "<configuration><analyzer><node_group_configuration_file>groups.xml"
                    "</node_group_configuration_file><config><a>1</a></config></analyzer></configuration>",
    "etc/CLIPS_type_map.xml": "<type_map><entry type='LONG'>a</entry></type_map>",
    "etc/fwd/base.xml": FWD.format(
        "<fwd_desc>All of it</fwd_desc><includes><include>fwd/sub.xml</include></includes>"
        "<providers config_file='own.xml'><provider>probe</provider></providers>"
        "<kb_mods config_file='kb.xml'><mod>rules/a.clp</mod></kb_mods>"),
    "etc/fwd/sub.xml": FWD.format("<providers><provider>second</provider></providers>"),
    "etc/providers/own.xml": "<configuration><collector><provider><probe><optionset id='x'>"
                             "<host>$HOME</host></optionset></probe></provider></collector></configuration>",
    "etc/providers/probe.xml": "<configuration><command>uname -a</command></configuration>",
    "etc/providers/second.xml": "<configuration><command>date</command></configuration>",
    "etc/postprocessor/table.xml": "<postproc_tables><table id='t'/></postproc_tables>",
    "etc/kb/kb.xml": "<kb_config><a><b c='d'>1</b></a></kb_config>",
    "kb/rules/a.clp": "(batch* rules/b.clp)\n(defrule a\n (x)\n=>\n (bind ?i \"b\")\n (assert (sign (id ?i))))\n",
    "kb/rules/b.clp": "(defrule b \"Text\"\n (x)\n=>\n (assert (sign (id \"c\"))))\n",
    "kb/data/msg_schema.xml": "<message_schema><category name='c'><message_id>m</message_id></category>"
                              "</message_schema>",
}

Outcome = collections.namedtuple("Outcome", "status out err record report trace")


def is_complete(record):
    try:
        return record == "" or bool(json.loads(record))
    except json.JSONDecodeError:
        return False


class Runs:
    """Runs of the program in a folder of its own, each from the same state."""

    def __init__(self, programs, source):
        self.program = str(pathlib.Path(programs) / "qorn-collect")
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="qorn-failures-"))
        self.source = pathlib.Path(source) / "installation"
        self.problems = []
        for schema in self.source.rglob("*.xsd"):
            self.put(schema.relative_to(self.source), schema.read_text())
        for name, text in DOCUMENTS.items():
            self.put(name, text)

    def put(self, name, text):
        (self.folder / name).parent.mkdir(parents=True, exist_ok=True)
        (self.folder / name).write_text(text)

    def run(self, before=(), **variables):
        for name in ("data.db", "record.json", "report", "trace"):
            (self.folder / name).unlink(missing_ok=True)
        environment = {"QORN_ROOT": str(self.folder), "HOME": str(self.folder), "PATH": os.environ["PATH"],
                       "QORN_RECORD": "record.json", "COLUMNS": "80", **variables}
        done = subprocess.run([*before, self.program, "-f", "nodes", "-F", "base", "-D", "data.db"],
                              cwd=self.folder, env=environment, stdin=subprocess.DEVNULL, timeout=120,
                              capture_output=True, check=False)
        return Outcome(done.returncode, done.stdout.decode(), done.stderr.decode(),
                       self.read("record.json"), self.read("report"), self.read("trace"))

    def read(self, name):
        file = self.folder / name
        return file.read_text(errors="replace") if file.exists() else ""

    def problem(self, place, words, outcome):
        print(f"{place}: {words}; status {outcome.status}, {outcome.report.strip()}\n{outcome.err[-500:]}")
        self.problems.append(place)

    def check(self, place, outcome, good, silent=False):
        """Names the outcome of one failure, and what is wrong with it."""
        if list(self.folder.glob(".qorn-record*")):
            self.problem(place, "a temporary file was left", outcome)
            for left in self.folder.glob(".qorn-record*"):
                left.unlink()
        if outcome.record != good.record and not is_complete(outcome.record):
            self.problem(place, "the record is half written", outcome)
        if outcome.report.startswith("crash in libxml2"):
            return outcome.report.strip()
        if outcome.report.startswith("crash") or outcome.status not in (0, 1):
            self.problem(place, "crash", outcome)
            return "crash"
        if outcome.status == 1:
            if not outcome.err.strip():
                self.problem(place, "failed without a word", outcome)
            return "out of memory" if re.search("bad_alloc|Out of memory", outcome.err) else "message"
        if outcome.err == good.err and not silent and \
                (outcome.out, outcome.record) != (good.out, good.record):
            self.problem(place, "a loss without a word", outcome)
        return "the same result" if outcome.err == good.err else "warning"


def fail_allocations(runs, kind, stride, library):
    preload = {"LD_PRELOAD": library, "QORN_FAILING_REPORT": str(runs.folder / "report")}
    good = runs.run(QORN_FAILING=f"{kind}:0", **preload)
    assert good.status == 0, good
    total = int(good.report.split()[-1])
    numbers = range(1, total + 1, stride)
    outcomes = collections.Counter(
        runs.check(f"{kind}:{number}", runs.run(QORN_FAILING=f"{kind}:{number}", **preload), good)
        for number in numbers)
    print(f"{len(numbers)} of {total} allocations failed, one at a time: {dict(outcomes)}")


def traced(runs):
    """The calls of a good run behind the setting of the handler: (name, its count so far, text)."""
    outcome = runs.run(["strace", "-o", "trace", "-e", "trace=rt_sigaction," + ",".join(CALLS)])
    seen = collections.Counter()
    calls, stands = [], False
    for line in outcome.trace.splitlines():
        name = line.split("(")[0]
        seen[name] += 1
        stands = stands or line.startswith("rt_sigaction(SIGINT")
        if stands and name in CALLS:
            calls.append((name, seen[name], line))
    assert len(calls) > 20, outcome
    return outcome, calls


def strace(name, effect, number):
    return ["strace", "-o", "trace", "-e", "trace=" + name, "-e", f"inject={name}:{effect}:when={number}"]


def fail_files(runs, stride):
    good, calls = traced(runs)
    outcomes = collections.Counter()
    for name, number, line in calls[::stride]:
        outcome = runs.run(strace(name, "error=" + CALLS[name], number))
        outcomes[runs.check(line, outcome, good, silent=bool(PASSED_OVER.search(line)))] += 1
    print(f"{sum(outcomes.values())} of {len(calls)} calls failed, one at a time: {dict(outcomes)}")


def interrupt(runs, points):
    _, calls = traced(runs)
    for name, number, line in calls[::max(len(calls) // points, 1)][:points]:
        outcome = runs.run(strace(name, "signal=SIGINT", number))
        print(line[:100])
        if outcome.status != 2 or INTERRUPTED not in outcome.out:
            runs.problem(line, "not the words and the status of an interrupted run", outcome)
        if list(runs.folder.glob(".qorn-record*")):
            runs.problem(line, "a temporary file was left", outcome)


def main(kind, programs, source, stride="1"):
    runs = Runs(programs, source)
    try:
        if kind in ("files", "interrupt") and \
                subprocess.run(["strace", "true"], capture_output=True, check=False).returncode != 0:
            print("Skipped: no process may be traced here.")
            return SKIPPED
        if kind == "files":
            fail_files(runs, int(stride))
        elif kind == "interrupt":
            interrupt(runs, 10)
        else:
            fail_allocations(runs, kind, int(stride), os.environ["QORN_FAILING_ALLOCATOR"])
    finally:
        shutil.rmtree(runs.folder)
    return 1 if runs.problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
