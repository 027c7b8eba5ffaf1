"""Ardour in folders of its own, what it dies of, and what its sessions keep of the plug-in."""

import base64
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import xml.etree.ElementTree

HERE = pathlib.Path(__file__).parent
ARDOUR = pathlib.Path("/usr/lib/ardour7")
# Ardour 7.3 sometimes dies or hangs in an export on a busy machine, with and without plug-ins: its main and its disk
# thread free the same automation history. So a death that does not lead into the plug-in is forgiven once.
ATTEMPTS = 2
SECONDS_PER_ATTEMPT = 60
# All plug-ins of ours have it in their file's name, and all functions in theirs.
OURS = "velotrine"
NO_PLUG_IN = "none"


def expect(holds, what):
    if not holds:
        sys.exit(f"{pathlib.Path(sys.argv[0]).name}: not so: {what}")


class Host:
    """Ardour without a window or a display, with folders of its own."""

    def __init__(self, folder, plug_in_format, plug_in):
        self.folder, self.format = folder, plug_in_format
        home = folder / "home"
        self.environment = dict(
            os.environ,
            HOME=str(home),
            XDG_CONFIG_HOME=str(home / "config"),
            XDG_CACHE_HOME=str(home / "cache"),
            XDG_DATA_HOME=str(home / "data"),
            # Without a name the plug-in takes :0, which is somebody's.
            DISPLAY=":none",
            LV2_PATH=f"{home}/.lv2:/usr/lib/lv2",
            # What the host's own start script sets; its scanner has none.
            LD_LIBRARY_PATH=str(ARDOUR),
            ARDOUR_DATA_PATH="/usr/share/ardour7",
            ARDOUR_CONFIG_PATH="/etc/ardour7",
            ARDOUR_DLL_PATH=str(ARDOUR),
            # SSE alone: with AVX-512, it mixes up to seven samples too many into a buffer, and exports die of that.
            ARDOUR_FPU_FLAGS="15",
        )
        presets = home / "config/ardour7/export"
        presets.mkdir(parents=True)
        shutil.copy(HERE / "exact-floats.preset", presets)
        if plug_in_format == NO_PLUG_IN:
            return
        installed = home / f".{plug_in_format}" / plug_in.name
        shutil.copytree(plug_in, installed)
        if plug_in_format == "vst3":
            self.scan(installed)

    def scan(self, bundle):
        # The host trusts a scan only if it is at least a second newer than the file.
        yesterday = time.time() - 24 * 60 * 60
        for file in bundle.rglob("*.so"):
            os.utime(file, (yesterday, yesterday))
        scanner = [ARDOUR / "ardour-vst3-scanner", "-f", "-v", bundle]
        scan = subprocess.run(scanner, env=self.environment, capture_output=True, text=True, timeout=30)
        found = scan.returncode == 0 and "Found Plugin: Velotrine" in scan.stdout
        expect(found, f"scanned: {scan.stdout}{scan.stderr}")

    def run(self, script, *arguments):
        """The script's answers, lists of words by their first word; or a Death."""
        answers = self.folder / "answers"
        command = ["gdb", "--batch", "--quiet", "--nx", "--command", HERE / "backtraces.gdb", "--args",
                   ARDOUR / "luasession", HERE / script, answers, HERE, *map(str, arguments)]
        log = self.folder / "log"
        with open(log, "w") as output:
            # A group of its own, so that all of it can be interrupted.
            debugger = subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=output,
                                        stderr=subprocess.STDOUT, start_new_session=True)
            hangs = not end_or_interrupt(debugger)
        text = log.read_text(errors="replace")
        ended = re.search(r"\[Inferior 1 \(process \d+\) exited (normally|with code \d+)\]", text)
        if hangs or ended is None:
            return Death(text, hangs)
        expect(ended.group(1) == "normally" and "Error: " not in text, f"{script} runs: {text}")
        found = {}
        for line in answers.read_text().splitlines():
            word, *rest = line.split("\t")
            found.setdefault(word, []).append(rest)
        return found

    def run_until_it_lives(self, script, *arguments, before_each=lambda: None, without_plug_in=lambda control: None):
        """Answers as run() does. What leads into the plug-in ends the test at once, another death when it comes again.

        without_plug_in runs the same in a host that has no plug-in: what it says tells whose fault a death may be.
        """
        for attempt in range(ATTEMPTS):
            before_each()
            answers = self.run(script, *arguments)
            if not isinstance(answers, Death):
                return answers
            print(f"{script}: Ardour {answers.manner}\n{answers.log}", flush=True)
            if answers.leads_into_the_plug_in():
                sys.exit(f"{script}: Ardour {answers.manner} in the plug-in")
            with tempfile.TemporaryDirectory() as folder:
                control = without_plug_in(Host(pathlib.Path(folder), NO_PLUG_IN, None))
            fate = control.manner if isinstance(control, Death) else "lives" if control else "was not tried"
            print(f"{script}: without any plug-in Ardour {fate}", flush=True)
        sys.exit(f"{script}: Ardour {answers.manner} {ATTEMPTS} times, though never in the plug-in")


class Death:
    """What is known of a host that died, or hung until it was ended."""

    def __init__(self, log, hangs):
        self.log, self.hangs = log, hangs
        self.manner = "hangs" if hangs else "dies"

    def leads_into_the_plug_in(self):
        """A crash does where the stack that it ended does; a hang where some thread's does whenever it is looked at."""
        if not self.hangs:
            return self.is_in_the_plug_in(self.log.partition("-- where it stopped")[2].partition("-- all threads")[0])
        looks = self.log.split("-- all threads")[1:]
        return bool(looks) and all(map(self.is_in_the_plug_in, looks))

    @staticmethod
    def is_in_the_plug_in(stacks):
        return any(OURS in line.lower() for line in stacks.splitlines() if line.startswith("#"))


def end_or_interrupt(debugger):
    """Whether the debugged program ends by itself; else the debugger is made to say where it hangs."""
    try:
        debugger.wait(SECONDS_PER_ATTEMPT)
        return True
    except subprocess.TimeoutExpired:
        pass
    for _ in range(3):
        child = subprocess.run(["pgrep", "--parent", str(debugger.pid)], capture_output=True, text=True, check=False)
        for program in child.stdout.split():
            os.kill(int(program), signal.SIGINT)
        try:
            debugger.wait(3)
            return False
        except subprocess.TimeoutExpired:
            pass
    os.killpg(debugger.pid, signal.SIGKILL)
    debugger.wait()
    return False


def plug_in_node(session):
    return xml.etree.ElementTree.parse(session).find(".//Processor[@name='Velotrine']")


def saved_state(plug_in_format, session):
    """Everything that the host keeps for the plug-in: values, bytes, and the instrument's state in the bytes."""
    node = plug_in_node(session).find(plug_in_format)
    values = [(port.attrib.get("id", port.attrib.get("symbol")), port.attrib["value"]) for port in node.iter("Port")]
    if plug_in_format == "vst3":
        kept = base64.b64decode(node.find("chunk").text)
    else:
        identity = plug_in_node(session).attrib["id"]
        kept = (session.parent / "plugins" / identity / node.attrib["state-dir"] / "state.ttl").read_bytes()
    text = kept[kept.index(b"{\n"):].decode(errors="replace")
    state, _ = json.JSONDecoder().raw_decode(text)
    return values, kept, state
