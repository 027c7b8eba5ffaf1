"""A session of Ardour's with the instrument in it, composed, opened again, exported, and what the program renders."""

import array
import math
import shutil
import struct
import subprocess

from ardour_host import NO_PLUG_IN, Death, expect

RATE = 48000
BLOCK = 1024  # frames that the host asks for at a time
ACTIVITY, VOLUME, SYNC = 0, 7, 8


def samples(path):
    """Interleaved; checks what the file says of itself."""
    data = path.read_bytes()
    position, chunks = 12, {}
    while position < len(data):
        name, size = struct.unpack_from("<4sI", data, position)
        chunks[name] = data[position + 8 : position + 8 + size]
        position += 8 + size + size % 2
    float_samples = 3
    expect(struct.unpack_from("<HHI", chunks[b"fmt "]) == (float_samples, 2, RATE), f"{path.name} holds stereo floats")
    return array.array("f", chunks[b"data"])


class Session:
    """The session, and what the program renders from the state in it."""

    def __init__(self, host, program):
        self.host, self.program = host, program
        self.folder = host.folder / "session"
        self.state_file = host.folder / "state.json"

    def compose(self, values):
        # A host that dies here leaves half a session.
        settings = " ".join(f"{index}:{value:.9f}" for index, value in enumerate(values))
        return self.host.run_until_it_lives(
            "compose.lua", self.folder, self.host.format.upper(), settings,
            before_each=lambda: shutil.rmtree(self.folder, ignore_errors=True),
            without_plug_in=lambda control: control.run("compose.lua", control.folder / "session", NO_PLUG_IN, ""))

    def reopen(self, name, tempo, frames, changes=""):
        def without_plug_in(control):
            folder = control.folder / "session"
            created = control.run("create.lua", folder, NO_PLUG_IN)
            return created if isinstance(created, Death) else control.run("reopen.lua", folder, name, tempo, frames)

        answers = self.host.run_until_it_lives(
            "reopen.lua", self.folder, name, tempo, frames, changes, without_plug_in=without_plug_in)
        exported = samples(self.folder / f"{name}.wav")
        expect(len(exported) == 2 * frames, f"{name} is {frames} frames long")
        expect(float(answers["seconds"][0][0]) < frames / RATE, f"{name} is exported faster than real time")
        expect(level(answers, "after the export") == -math.inf, f"silence after {name}")
        return answers, exported

    def render(self, tempo, frames, **changes):
        out = self.host.folder / "rendered.wav"
        settings = [word for name, value in changes.items() for word in ("--set", f"{name}={value}")]
        subprocess.run(
            [self.program, "render", "--state", self.state_file, "--tempo", str(tempo), "--seconds",
             str(frames / RATE), "--tail", "none", "--format", "f32", "--quiet", "--out", out, *settings],
            check=True)
        return samples(out)


def level(answers, when):
    return next(float(words[1]) for words in answers["level"] if words[0] == when)


def expect_music(sound, what):
    peak = max(map(abs, sound))
    mean_square = sum(sample * sample for sample in sound) / len(sound)
    expect(0.05 < peak <= 1.0 and mean_square > 1e-5, f"{what} is music: peak {peak}, mean square {mean_square}")


def expect_same(actual, expected, what):
    wrong = next((i for i, pair in enumerate(zip(actual, expected)) if pair[0] != pair[1]), None)
    expect(len(actual) == len(expected), f"{what} is as long")
    expect(wrong is None, f"{what} is the same: it differs at frame {wrong and wrong // 2}")


# Volume jumps after two seconds, activity after four.
QUIET, TURNING, FRAMES = 2 * RATE, 4 * RATE, 6 * RATE
JUMPS = f"{VOLUME}:0.75:0.25:{QUIET} {ACTIVITY}:0.25:1:{TURNING}"


def expect_jumps(session, exported):
    """Volume does not touch what is played, so what follows its jump is as if it had been there from the start.

    A plug-in may have a value early by up to a block: VST3 hosts hand over all of a block's together.
    """
    loud, soft = (session.render(120, FRAMES, volume=volume, activity=0.25) for volume in (0.75, 0.25))
    before = slice(0, 2 * (QUIET - BLOCK))
    after = slice(2 * (QUIET + BLOCK), 2 * (TURNING - BLOCK))
    expect_same(exported[before], loud[before], "the sound before volume jumps")
    expect_same(exported[after], soft[after], "the sound after it")
    expect_music(exported[2 * TURNING :], "the sound at another activity")
    expect(exported[2 * TURNING :] != soft[2 * TURNING :], "another activity sounds different")
