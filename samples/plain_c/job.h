/**
 * @file job.h
 * One job without a document, in plain C: C89, nothing but the system, no C runtime. The six
 * exports come from outside, looked up by name or linked.
 */
#pragma once

#include <vok/vok.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct VokExports {
    VOKLaunchXFilesFn launch;
    VOKSendMsgFn sendDral;
    VOKSendMsgFn sendNemb;
    VOKSendMsgExFn sendMsgEx;
    VOKGetFn getDral;
    VOKGetFn getNemb;
} VokExports;

/**
 * Launches both companions of a printer, opens a job of one page towards them, tells NEMB by
 * VOKSendMsgEx of the page's end, and closes the job. One job at a time.
 *
 * @return Null when all of it went well, else what did not. That may be memory that ran out in the
 *         library, which fails the job and not the program.
 */
const char* driveJob(const VokExports* vok, const char* printer);

/** Writes a line to the standard output. */
void say(const char* text);

#ifdef __cplusplus
}
#endif
