"""Ardour in folders of its own, and what its sessions keep of the plug-in."""

import base64
import json
import os
import pathlib
import shutil
import subprocess
import sys
import time
import xml.etree.ElementTree

HERE = pathlib.Path(__file__).parent
ARDOUR = pathlib.Path("/usr/lib/ardour7")
# Ardour 7.3 sometimes dies or hangs in an export on a busy machine, with and without plug-ins: its main and its disk
# thread free the same automation history. Nothing that a plug-in could do keeps it alive; so it is asked again.
ATTEMPTS = 6
SECONDS_PER_ATTEMPT = 20


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
            # Without a name the plug-in takes the first display that it finds, which may be another test's and go away.
            DISPLAY=":none",
            LV2_PATH=f"{home}/.lv2:/usr/lib/lv2",
            # What the host's own start script sets; its scanner has none.
            LD_LIBRARY_PATH=str(ARDOUR),
            ARDOUR_DATA_PATH="/usr/share/ardour7",
            ARDOUR_CONFIG_PATH="/etc/ardour7",
            ARDOUR_DLL_PATH=str(ARDOUR),
        )
        presets = home / "config/ardour7/export"
        presets.mkdir(parents=True)
        shutil.copy(HERE / "exact-floats.preset", presets)
        installed = home / f".{plug_in_format}" / plug_in.name
        shutil.copytree(plug_in, installed)
        if plug_in_format == "vst3":
            self.scan(installed)

    def scan(self, bundle):
        # The host believes a scan only if it is at least a second younger than the file.
        yesterday = time.time() - 24 * 60 * 60
        for file in bundle.rglob("*.so"):
            os.utime(file, (yesterday, yesterday))
        scanner = [ARDOUR / "ardour-vst3-scanner", "-f", "-v", bundle]
        scan = subprocess.run(scanner, env=self.environment, capture_output=True, text=True, timeout=30)
        found = scan.returncode == 0 and "Found Plugin: Velotrine" in scan.stdout
        expect(found, f"scanned: {scan.stdout}{scan.stderr}")

    def run(self, script, *arguments):
        """The script's answers: lists of words by their first word."""
        answers = self.folder / "answers"
        command = [ARDOUR / "luasession", HERE / script, answers, HERE, *map(str, arguments)]
        log = self.folder / "log"
        with open(log, "w") as output:
            try:
                ended = subprocess.run(
                    command, env=self.environment, stdin=subprocess.DEVNULL, stdout=output,
                    stderr=subprocess.STDOUT, timeout=SECONDS_PER_ATTEMPT
                ).returncode
            except subprocess.TimeoutExpired:
                ended = -1
        text = log.read_text(errors="replace")
        expect(ended < 0 or (ended == 0 and "Error: " not in text), f"{script} runs: {text}")
        if ended < 0:
            return None
        found = {}
        for line in answers.read_text().splitlines():
            word, *rest = line.split("\t")
            found.setdefault(word, []).append(rest)
        return found

    def run_until_it_lives(self, script, *arguments, before_each=lambda: None):
        for _ in range(ATTEMPTS):
            before_each()
            answers = self.run(script, *arguments)
            if answers is not None:
                return answers
            print(f"{script}: Ardour died or hung; once more", flush=True)
        sys.exit(f"Ardour does not survive {script}")


def plug_in_node(session):
    return xml.etree.ElementTree.parse(session).find(".//Processor[@name='Velotrine']")


def saved_state(plug_in_format, session):
    """All that the host keeps for the plug-in: its bytes, and the instrument's state in them."""
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
