// The texts of the findings. docs/troubleshooting.md is made from them (vok-log --messages).
#ifndef VOK_LOG_FINDING_TEXTS_H
#define VOK_LOG_FINDING_TEXTS_H

#include <array>

#include "findings.h"

namespace vok::log {

inline constexpr std::array findingTexts = {
    FindingText{
        FindingId::LibraryNotLoaded, "log-library-not-loaded", Weight::Problem,
        "A library could not be loaded",
        "The library looked for a file in the system's search path and in the printer driver "
        "directory and could load it from neither. The number is the system's error code: 126 is "
        "a missing file (or one that it needs), 193 a file for another processor.",
        "Put the file named in the line into the printer driver directory, in the 64-bit form."},
    FindingText{FindingId::LibraryNotUnloaded, "log-library-not-unloaded", Weight::Warning,
                "A library could not be unloaded",
                "The configuration library was asked for the logger's registry path and could not "
                "be let go afterwards. The job is not touched by that.",
                "Nothing for this job. If it repeats, see whether another program replaces or "
                "unloads the configuration library while the spooler runs."},
    FindingText{FindingId::Registry, "log-registry", Weight::Problem,
                "The logger's options could not be read",
                "The registry key that the configuration library names, or the Logger key below "
                "it, could not be opened, made or read. Code 2 is a missing key, 5 a denied "
                "access, 234 or 0 a value of another type than a 32-bit number.",
                "Create the base key, give the spooler's account full access to it, and store the "
                "options as 32-bit numbers (REG_DWORD)."},
    FindingText{FindingId::NoModuleName, "log-module-name", Weight::Warning,
                "The library's own file name has no folder",
                "The model prefix is taken from the library's own file name, and the system gave "
                "that name without a path.",
                "Load the library by its full path, under a name that begins with the model "
                "prefix."},
    FindingText{FindingId::DriverDirectory, "log-driver-directory", Weight::Problem,
                "The printer driver directory could not be had",
                "The system did not name the directory in which drivers and companions lie.",
                "See that the spooler service runs and has a 64-bit driver installed."},
    FindingText{FindingId::PrinterNotOpened, "log-printer-not-opened", Weight::Problem,
                "The printer could not be opened",
                "No printer of the name that the print processor gave could be opened, so neither "
                "companion is looked for. Names are compared as they are, without a server part.",
                "Compare the name in the line with the printer's name in the system; it may have "
                "been renamed or deleted, or the spooler's account may not use it."},
    FindingText{FindingId::NoPrefixData, "log-no-prefix-data", Weight::Problem,
                "The printer has no \"Printer Prefix\"",
                "The printer's driver data lacks the value \"Printer Prefix\" from which NEMB's "
                "window name is formed. NEMB is neither found nor started.",
                "Store the model prefix as text in the printer's data under \"Printer Prefix\"; "
                "the driver's installation does that."},
    FindingText{FindingId::NoUserToken, "log-no-user-token", Weight::Warning,
                "The user's token could not be had",
                "The spooler runs in a session of its own and asked for the token of the user at "
                "the console. Code 1008 or 1312: nobody is logged on there; 1314: the host lacks "
                "the privilege (it is not the spooler service). The companion is then started "
                "without the user's session, where nobody sees it.",
                "Log on at the console, or see whether the user works in a remote session: "
                "companions are started at the console only."},
    FindingText{FindingId::NoEnvironment, "log-no-environment", Weight::Problem,
                "The user's environment could not be made",
                "The user's token was there, but the start ended without a word before the program "
                "was called: the environment block for the user could not be made.",
                "See that the user's profile is loaded and whole; log off and on again."},
    FindingText{FindingId::StartAsUserFailed, "log-start-as-user-failed", Weight::Problem,
                "The companion could not be started for the user",
                "The system refused to start the companion in the user's session. Code 2 or 3: the "
                "file is not at the path in the line before; 5: denied; 193: not a program; 740: "
                "it wants to be elevated; 1314: the host lacks the privilege.",
                "Put the companion where the command line says, readable for the user."},
    FindingText{FindingId::StartFailed, "log-start-failed", Weight::Problem,
                "The companion could not be started",
                "The system refused to start the companion. Code 2 or 3: there is no such file in "
                "the system directory; 5: denied; 193: not a program for this system.",
                "Put the companion's program where the line before says."},
    FindingText{FindingId::NotStarted, "log-companion-not-started", Weight::Problem,
                "The companion was not started",
                "The library was about to start the companion, and no line of success follows. "
                "This start writes no error code; the usual cause is a missing program file.",
                "See that the companion's file stands in the printer driver directory, in the "
                "version's subdirectory, and that its path has no blanks."},
    FindingText{FindingId::PipeNotMade, "log-pipe-not-made", Weight::Problem,
                "The pipe could not be made",
                "The named pipe to the companion could not be created. Another program holds the "
                "name, or two jobs of this printer have one already.",
                "See who holds the pipe (DRAL or NEMB and the printer's name). Let only one job "
                "of a printer run at a time, and end each with a close or cancel event."},
    FindingText{FindingId::NoWindowYet, "log-no-window-yet", Weight::Warning,
                "The companion has no window yet",
                "The companion was started and its window was not there at once. The launch "
                "reports failure; the window is looked for again at the next launch or event.",
                "Nothing if the job goes on. Otherwise the companion shows no window of the name "
                "that the library looks for: check its class and title."},
    FindingText{FindingId::WindowNotFound, "log-window-not-found", Weight::Problem,
                "The companion's window did not appear",
                "The companion was started and its window was looked for two seconds long.",
                "See whether the companion ends at once or shows a window of another class or "
                "title than the line says."},
    FindingText{FindingId::LaunchFailed, "log-launch-failed", Weight::Problem, "The launch failed",
                "The companions could not both be reached, no line says why, and the job had no "
                "answer from either afterwards.",
                "Look at the last line before the end of the launch: what was tried last is what "
                "failed. Check the companions' files and window names."},
    FindingText{FindingId::LaunchUnfinished, "log-launch-unfinished", Weight::Problem,
                "The launch has no end",
                "The launch began and the log has no line of its result: the host ended or hangs "
                "in it, or the log was switched off meanwhile.",
                "See whether the spooler was restarted at that time. If it hangs, the last line "
                "says in what."},
    FindingText{FindingId::NoLaunch, "log-no-launch", Weight::Note, "The job's launch is missing",
                "Events of a job are there without its launch: the log begins in the middle of "
                "it, or was moved or deleted meanwhile.",
                "Read the older file together with this one (--joined)."},
    FindingText{FindingId::NotConnected, "log-not-connected", Weight::Problem,
                "The companion was not at the pipe",
                "The pipe had no client or has lost it, so the event was answered YESPRINT "
                "without the companion. Code 232: the companion closed its end; 6: the pipe is "
                "closed on this side already.",
                "See why the companion ended or closed the pipe before the job's end."},
    FindingText{FindingId::StartupTimeout, "log-startup-timeout", Weight::Problem,
                "The companion did not finish starting in time",
                "DRAL was given 120 seconds to become ready and did not.",
                "See what the companion waits for when it starts: a dialog, the network, a "
                "printer."},
    FindingText{FindingId::StartupWaitFailed, "log-startup-wait-failed", Weight::Problem,
                "The start of the companion could not be waited for",
                "Waiting for DRAL to become ready failed at once: it ended, or has no message "
                "loop.",
                "Start the companion by hand with the same command line and see whether it stays."},
    FindingText{FindingId::NoWindow, "log-no-window", Weight::Problem,
                "The companion's window is not there",
                "An event had to be sent and the companion has no window of its name. The event "
                "was answered NOPRINT: the print processor stops the job.",
                "See whether the companion still runs, in the session of the spooler, and bears "
                "the window name that the contract asks for."},
    FindingText{FindingId::NoHandle, "log-no-handle", Weight::Problem,
                "The event had no companion to go to",
                "The job record holds no handle of the companion (or there is no record): the "
                "launch failed, or the job was ended before. The event was answered YESPRINT.",
                "Look at the job's launch. If it succeeded, the print processor sends events "
                "after the close or cancel event."},
    FindingText{FindingId::NotOpen, "log-not-open", Weight::Warning,
                "The job was not open for the companion",
                "The companion was not told of the event, because DRAL has not accepted the "
                "opening of the job, or has been told of it already. Answered YESPRINT.",
                "See DRAL's answer to OPENJOB in the same job. A second OPENJOB of one record is "
                "not sent either."},
    FindingText{FindingId::Refused, "log-refused", Weight::Problem, "The companion stopped the job",
                "The answer was NOPRINT. On the pipe it is also the answer for DRAL when the pipe "
                "broke during the exchange or no block was given.",
                "Ask the companion: its own log or window says why it refused. If it ended at "
                "that time, find out why."},
    FindingText{FindingId::NotHandedOn, "log-not-handed-on", Weight::Problem,
                "An answer after the opening was NOPRINT, or none",
                "The answer to an event on NEMB's pipe was NOPRINT. The library writes that too "
                "when the pipe is broken, which is the usual case: NEMB ended or closed the pipe. "
                "The print processor was answered YESPRINT and goes on.",
                "Find out why NEMB ended during the job. If it did not, it should refuse a job "
                "when it is opened."},
    FindingText{FindingId::StillWaiting, "log-still-waiting", Weight::Problem,
                "The job ended while the companion was busy",
                "The last answer to the event was WAITPRINT, and the print processor did not ask "
                "again.",
                "See how often the event was sent, and how long the companion needs."},
    FindingText{FindingId::NoAnswer, "log-no-answer", Weight::Problem,
                "The companion did not answer",
                "The event was sent, or its pipe was waited for, and the log has no answer, though "
                "it goes on. The library waits without a bound, or the host ended meanwhile.",
                "See whether the companion hangs (a dialog, a lock). Ending it ends the wait if "
                "it was connected. A companion that never opened its pipe can't end the wait: "
                "then the host itself has to be ended (restart the spooler)."},
    FindingText{FindingId::SlowAnswer, "log-slow-answer", Weight::Warning,
                "The companion took long to answer", "Printing stood still until the answer came.",
                "See what the companion does at that time; it may answer WAITPRINT at once "
                "instead."},
    FindingText{FindingId::ManyWaits, "log-many-waits", Weight::Warning,
                "The companion asked to be waited for, again and again",
                "WAITPRINT means: not yet, ask again. The print processor did, and the job stood "
                "still all the while.",
                "See what the companion waits for: a dialog, a quota, the printer. The event and "
                "its lines say since when."},
    FindingText{FindingId::LongStartup, "log-long-startup", Weight::Warning,
                "The companions took long to start",
                "The job stood still while a companion was started, or until one that had been "
                "started took its first event.",
                "Start the companion by hand and see what it does first. One that runs already, "
                "from the user's logon on, needs no start."},
    FindingText{FindingId::SlowHost, "log-slow-host", Weight::Warning,
                "The time went by outside the library and the companions",
                "Between the end of one call and the next the print processor, the spooler or the "
                "port were at work, or stood still. No companion was asked anything then.",
                "Look there: the size of the job, the port, a paused printer. The companions are "
                "not the cause."},
    FindingText{
        FindingId::UnusualReply, "log-unusual-reply", Weight::Warning,
        "An answer out of the ordinary",
        "The answer was neither NOPRINT (0), YESPRINT (1) nor WAITPRINT (2), or it was NOPRINT "
        "to the end of a job, where nothing is left to stop. It is handed to the print "
        "processor as it is.",
        "Check what the companion returns: all four bytes on the pipe, the window "
        "procedure's result in a window."},
    FindingText{FindingId::UnknownEvent, "log-unknown-event", Weight::Warning,
                "DRAL was sent an event that it has no use for",
                "Only opening, start of page, close and cancel go to DRAL. The event was answered "
                "YESPRINT without it.",
                "Send end of page to NEMB alone."},
    FindingText{FindingId::InvalidMessage, "log-invalid-message", Weight::Warning,
                "A message without companion or data",
                "A message of the print processor's own had no handle or no data and was not sent.",
                "Send such messages only while the companion's handle is there."},
    FindingText{FindingId::LibraryException, "log-library-exception", Weight::Warning,
                "The logger met an error of the system",
                "Writing the trace of a call failed with this code and text. The call went on.",
                "Check the log file's folder and the options' registry key."},
    FindingText{FindingId::NotClosed, "log-not-closed", Weight::Warning, "The job has no end",
                "Neither a close nor a cancel event of the job is in the log.",
                "See whether the host ended meanwhile, or the log was moved. On the pipe route a "
                "job that is not ended keeps its pipes."},
    FindingText{FindingId::JobSilent, "log-job-silent", Weight::Problem, "The job fell silent",
                "This job says nothing for longer than the limit: no event was under way, and "
                "neither a close nor a cancel event came. The host ended or stands still.",
                "See whether the spooler was restarted at that time, and what the print processor "
                "does between two events."},
    FindingText{FindingId::JobOpen, "log-job-open", Weight::Note,
                "The job is not over when the log ends",
                "The log ends in the middle of the job, as a copy of a log that is being written "
                "does. What becomes of the job isn't in it.",
                "Copy the log once more, later, and read it again."},
    FindingText{FindingId::MixedJobs, "log-mixed-jobs", Weight::Note,
                "Jobs that can't be told apart",
                "Jobs ran at the same time and the log has no process and thread numbers, so "
                "which line belongs to which of them is not known. What may be a guess is left "
                "out, so that a problem of one of these jobs may be missing here.",
                "Turn the numbers on: vok-doctor --log on. Then print once more."},
    FindingText{FindingId::TornLines, "log-torn-lines", Weight::Note, "Torn lines",
                "Records that were cut or ran into each other, as after a full disk, a crash, or "
                "past 2 GiB, where the library writes over the file's beginning. They are counted "
                "and left out.",
                "Move the log away before it grows that large."},
    FindingText{FindingId::ForeignLines, "log-foreign-lines", Weight::Note, "Foreign lines",
                "Lines that are no records. They are counted and left out.",
                "See that no other program writes into the file without the log's form."},
    FindingText{FindingId::UnknownTexts, "log-unknown-texts", Weight::Note,
                "Records of the library that the reader does not know",
                "The form is right and the text is none of this version of the library.",
                "Use the reader that came with the library."},
    FindingText{FindingId::NoClock, "log-no-clock", Weight::Note, "Records without a clock",
                "The option \"Clocktime_In_Header\" is 0. Times and durations are unknown; the "
                "order is that of the file.",
                "Set \"Clocktime_In_Header\" to 1."},
    FindingText{FindingId::ClockBack, "log-clock-back", Weight::Note, "The clock went back",
                "A record is older than the one before by more than a second: the clock was set, "
                "or summer time ended. Durations across that point are left out.",
                "Nothing; mind it when comparing times."},
    FindingText{FindingId::ClockJump, "log-clock-jump", Weight::Note,
                "The clock was set during a job",
                "The clock and the tick counts in the log's lines do not agree. The job's times "
                "are those of the tick counts, which nobody sets.",
                "Nothing; mind it when comparing times with other logs."},
    FindingText{FindingId::NoDetails, "log-no-details", Weight::Note,
                "The log has calls without their details",
                "Only the entry and exit of functions were written, so that replies are unknown.",
                "Set the option \"VOK\" (or \"All\") to include detail lines: 11 or more, all its "
                "bits for everything."},
    FindingText{FindingId::FileDamaged, "log-file-damaged", Weight::Note,
                "The file could not be read to its end",
                "The compressed file is damaged or incomplete, or reading failed. What was read "
                "is in the account.",
                "Copy the file once more."},
    FindingText{FindingId::JobsCutShort, "log-jobs-cut-short", Weight::Note,
                "Jobs were closed early in the account",
                "More jobs were open at once than the reader keeps, and the oldest were written "
                "down as they stood.",
                "Nothing, if hosts were killed often. Otherwise switch on the process and thread "
                "ids (\"Proc_Id_In_Header\", \"Thread_Id_In_Header\")."},
};

}  // namespace vok::log

#endif
