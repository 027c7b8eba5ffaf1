"""A screen, and the hands in front of it: windows, mouse and keyboard through X11's own tools."""

import re
import subprocess
import sys
import time

SECONDS = 60  # what a host may need for anything on a busy machine


def wait_for(condition, what, seconds=SECONDS):
    """What the condition gives once it is true; ends the test if it stays false."""
    end = time.monotonic() + seconds
    while not (answer := condition()):
        if time.monotonic() > end:
            sys.exit(f"{what}: not within {seconds} seconds")
        time.sleep(0.05)
    return answer


def output_of(*command):
    """None if the command fails, as it does for a window that has just closed."""
    ended = subprocess.run(command, capture_output=True, check=False)
    return ended.stdout.decode(errors="replace") if ended.returncode == 0 else None


def xdotool(*words):
    return output_of("xdotool", *map(str, words))


def window_named(pattern):
    """The window on show whose name this is; None if there is none."""
    found = (xdotool("search", "--onlyvisible", "--name", pattern) or "").split()
    return int(found[0]) if found else None


def innermost(window):
    """The deepest of the windows within one."""
    lines = (output_of("xwininfo", "-tree", "-id", str(window)) or "").splitlines()
    inside = [(line.index("0x"), int(line.split()[0], 16)) for line in lines if re.match(r" +0x", line)]
    return max(inside)[1] if inside else None


def keyboard_owner():
    found = xdotool("getwindowfocus", "-f")
    return int(found) if found else None


def listens_to_keys(window):
    return "KeyPress" in (output_of("xwininfo", "-events", "-id", str(window)) or "")


def press(*keys):
    xdotool("key", *keys)


def write(text):
    xdotool("type", text)


class Editor:
    """The plug-in's editor in a host's window, at its initial size."""

    KNOB = (432, 62)
    TEMPO = (75, 315)
    BARE_GROUND = (30, 70)
    INNERMOST_RING = (292, 192)
    PANEL_GROUND = (30, 70)
    STEPS = (215, 87)
    WIDTH, HEIGHT = 480, 360

    def __init__(self, host_window):
        self.window = wait_for(lambda: self.shown_in(host_window), "the editor shows in the host's window")

    def shown_in(self, host_window):
        inside = innermost(host_window)
        if inside is None:
            return None
        geometry = output_of("xwininfo", "-id", str(inside)) or ""
        size = [int(number) for number in re.findall(r"(?:Width|Height): (\d+)", geometry)]
        self.window = inside
        # White knobs at the right, on a ground of dark grey.
        is_drawn = size == [self.WIDTH, self.HEIGHT] and len(self.colours("60x60+404+20")) > 10
        return inside if is_drawn else None

    def colours(self, area):
        text = subprocess.run(
            f"import -window {self.window} png:- | convert png:- -crop {area} +repage -unique-colors txt:-",
            shell=True, capture_output=True, text=True, check=False).stdout
        return set(re.findall(r"#[0-9A-F]+", text))

    def colour(self, place):
        return self.colours(f"1x1+{place[0]}+{place[1]}")

    def click(self, place):
        xdotool("mousemove", "--window", self.window, *place)
        xdotool("click", 1)

    def has_keyboard(self):
        return keyboard_owner() == self.window and listens_to_keys(self.window)

    def host_has_keyboard(self):
        return keyboard_owner() != self.window and not listens_to_keys(self.window)

    def enter(self, field, text):
        """Clicks a field, types a number and presses Return."""
        self.click(field)
        wait_for(self.has_keyboard, "the field that is clicked has the keyboard")
        write(text)
        press("Return")
        wait_for(self.host_has_keyboard, "the host has the keyboard back")

    def open_ring(self):
        before = self.colour(self.PANEL_GROUND)
        self.click(self.INNERMOST_RING)
        wait_for(lambda: self.colour(self.PANEL_GROUND) != before, "a click on a ring opens its panel")
        wait_for(self.host_has_keyboard, "a click on a ring leaves the keyboard to the host")
