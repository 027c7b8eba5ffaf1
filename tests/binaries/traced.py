"""What a program does to files and sockets, as strace (Debian's package of that name) sees it."""
import re
import subprocess
from pathlib import Path

CHANGING = 'openat,open,creat,rename,renameat,renameat2,mkdir,mkdirat,link,linkat,symlink,symlinkat,unlink,unlinkat,' \
           'rmdir,truncate,chmod,fchmodat,chown,fchownat,utimensat,mknod,mknodat'
READS_ONLY = re.compile(r'O_RDONLY')
PATH = re.compile(r'"((?:[^"\\]|\\.)*)"')
FAMILY = re.compile(r'socket\((\w+)')


class Trace:
    """Paths that were opened for writing or changed, absolute; and the families of sockets."""

    def __init__(self, log: Path, folder: Path):
        self.written = set()
        self.families = set()
        for line in log.read_text().splitlines():
            call = line.split(None, 1)[1]
            if call.startswith('socket('):
                self.families.add(FAMILY.match(call)[1])
            elif ' = -1 ' not in call and '(' in call and not READS_ONLY.search(call):
                self.written |= {folder / path for path in PATH.findall(call)}


def command(log: Path):
    """What to put before a program's name."""
    return ['strace', '-f', '-qq', '-o', str(log), '-e', f'trace={CHANGING},socket', '-e', 'signal=none']


def run(program, folder: Path, **options):
    """Runs a program in a folder to its end; it must go well."""
    log = folder / 'strace.log'
    subprocess.run(command(log) + program, cwd=folder, check=True, **options)
    return Trace(log, folder)
