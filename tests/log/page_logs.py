"""Logs for the tests of the timeline page, in the library's own texts."""

DAY = "2024/03/07-"
FOLDER = "C:\\windows\\system32\\spool\\drivers\\x64\\3\\"


class Log:
    """The lines of jobs, each at its time; jobs of different threads may overlap."""

    def __init__(self):
        self.lines = []
        self.ahead = 0  # of the clock
        self.numbers = True

    def add(self, time, thread, text):
        seconds, milliseconds = divmod(time + self.ahead, 1000)
        clock = f"{seconds // 3600:02}:{seconds // 60 % 60:02}:{seconds % 60:02}.{milliseconds:03}"
        ids = f"pid=1000 tid={thread:04x} " if self.numbers else ""
        self.lines.append((time, f"{DAY}{clock} {ids}VOK        {text}\r\n"))

    def launch(self, time, thread, printer, length=20):
        handle = thread * 16
        for step, text in enumerate((
                "+VOKLaunchXFiles", "-VOKLaunchXFiles",
                f"FriendlyName = {printer}, PortName = LPT1:",
                "+StartDRALXP", "-StartDRALXP", f"The module name = {FOLDER}DEMOvok.dll",
                "Using Pipes in StartDral",
                f"Return from StartDRALXP Pipes. Dral HPIPE = 0x{handle:016X}",
                "+StartNEMBXP", "-StartNEMBXP", "Using Pipes in StartNembXP",
                f"Return from StartNEMBXP Pipes. Nemb HPIPE = 0x{handle + 4:016X}")):
            self.add(time + step * length // 12, thread, text)
        self.add(time + length, thread, f"rc = TRUE from VOKLaunchXFiles StartJobTime={time + 1000}")

    def event(self, time, thread, side, name, reply="YESPRINT", after=4):
        """Without a reply the companion does not answer."""
        paged = "STARTPAGE/ENDPAGE" if side == "Nemb" and name == "STARTPAGE" else name
        handle = thread * 16 + (4 if side == "Nemb" else 0)
        self.add(time, thread, f"+VOKSend{side}Msg")
        self.add(time, thread, f"-VOKSend{side}Msg")
        self.add(time, thread, f"SM_{paged}. {side} HPIPE = 0x{handle:016X}")
        if reply:
            dot = "." if side == "Dral" and name != "CLOSEJOB" else ""
            self.add(time + after, thread, f"{paged} Write{side}Pipe{dot} rc = {reply}")
        if reply == "YESPRINT" and (side, name) == ("Nemb", "CLOSEJOB"):
            self.add(time + after, thread, f"Close PIPENon Root Session - EndJobTime={time + after + 1000}")

    def both(self, time, thread, name, reply="YESPRINT", after=4):
        self.event(time, thread, "Dral", name, reply, after)
        self.event(time + after + 1, thread, "Nemb", name, "YESPRINT", after)

    def job(self, time, thread, printer, pages=3, pause=100, refused=None):
        """A job of so many pages; gives when it is over."""
        self.launch(time, thread, printer)
        time += 30
        self.both(time, thread, "OPENJOB")
        for page in range(1, pages + 1):
            time += pause
            self.both(time, thread, "STARTPAGE", "NOPRINT" if page == refused else "YESPRINT")
        time += pause
        self.both(time, thread, "CLOSEJOB")
        return time + 9

    def write(self, path):
        lines = sorted(self.lines, key=lambda line: line[0])
        path.write_bytes("".join(text for _, text in lines).encode())
        return path


def dense(path):
    """A refusal among sixty pages that have hardly a pixel each; another job long after."""
    log = Log()
    log.job(0, 1, "Office", pages=60, pause=20, refused=30)
    log.job(19000, 2, "Office")
    return log.write(path)


def waits(path):
    """Job 1: CLOSEJOB answered WAITPRINT, asked again after two seconds. Job 2: whole."""
    log = Log()
    log.launch(0, 1, "Office")
    log.both(100, 1, "OPENJOB")
    log.event(500, 1, "Dral", "CLOSEJOB", "WAITPRINT")
    log.event(2500, 1, "Dral", "CLOSEJOB")
    log.event(2510, 1, "Nemb", "CLOSEJOB")
    log.job(3000, 2, "Office")
    return log.write(path)


def hang(path):
    """Job 1 is not answered its CLOSEJOB while job 2 of another printer goes on for long."""
    log = Log()
    log.launch(0, 1, "Office")
    log.both(100, 1, "OPENJOB")
    log.event(500, 1, "Dral", "CLOSEJOB", None)
    log.job(1000, 2, "Store", pages=600)
    return log.write(path)


def jump(path):
    """The clock is set forward by an hour in the middle of a job of five seconds."""
    log = Log()
    log.launch(0, 1, "Office")
    log.both(100, 1, "OPENJOB")
    log.ahead = 3600000
    log.both(4900, 1, "CLOSEJOB")
    return log.write(path)


def mixed(path):
    """Two jobs whose companions have the same handles, at the same time and without numbers."""
    log = Log()
    log.numbers = False
    log.job(0, 1, "Office")
    log.job(15, 1, "Store")
    return log.write(path)


def refusal(path, pages=165, refused=81):
    """A job refused in its middle: the print processor goes on all the same."""
    log = Log()
    log.job(0, 1, "Office", pages=pages, refused=refused)
    return log.write(path)


def crowd(path):
    """Jobs of three printers, some at the same time, some refused, close upon each other."""
    log = Log()
    for number in range(12):
        printer = f"Printer {number % 3} on a floor with a long name"
        log.job(number * 130, number + 1, printer, refused=2 if number % 4 == 0 else None)
    return log.write(path)


def many(path, jobs):
    """So many short jobs of eight printers, one in fifty refused."""
    log = Log()
    for number in range(jobs):
        log.job(number * 400, number % 8 + 1, f"Printer {number % 8}", pages=1,
                refused=1 if number % 50 == 7 else None)
    return log.write(path)
