#include "checks.h"

#include <vok/vok.h>

#include <string>
#include <vector>

#include "common/output.h"
#include "common/system_text.h"
#include "job.h"
#include "spooler_stand_in.h"

namespace vok::check {

std::string checkJob(Host& host, std::string& seen) {
    Job job(host, host.newPrinter());
    const std::string wrong = job.launchAndRun();
    seen = "replies " + job.replies();
    return wrong;
}

// A job may be cancelled before it was opened, after that, and between its pages.
std::string checkCancel(Host& host, std::string& seen) {
    seen = "before the opening, after it, and between pages";
    const std::vector<std::vector<DWORD>> ways = {
        {SM_CANCELJOB},
        {SM_OPENJOB, SM_CANCELJOB},
        {SM_OPENJOB, SM_STARTPAGE, SM_CANCELJOB},
        {SM_OPENJOB, SM_STARTPAGE, SM_STARTPAGE, SM_CANCELJOB}};
    for (const std::vector<DWORD>& way : ways) {
        endCompanions();
        Job job(host, host.newPrinter());
        std::string wrong = job.launch();
        for (std::size_t index = 0; index < way.size() && wrong.empty(); ++index) {
            wrong = job.send(way[index]);
        }
        if (!wrong.empty()) {
            return "after " + std::to_string(way.size() - 1) + " events: " + wrong;
        }
    }
    return {};
}

std::string checkTwoJobs(Host& host, std::string& seen) {
    const std::string printer = host.newPrinter();
    for (int number = 1; number <= 2; ++number) {
        Job job(host, printer);
        const std::string wrong = job.launchAndRun();
        if (!wrong.empty()) {
            return "job " + std::to_string(number) + ": " + wrong;
        }
    }
    seen = "one companion served both";
    return startedCompanions().size() == 1
               ? ""
               : "the companion was started " + std::to_string(startedCompanions().size()) +
                     " times: it did not outlive the first job";
}

std::string checkTwoPrinters(Host& host, std::string& seen) {
    const std::string printers[] = {host.newPrinter(), host.newPrinter()};
    Job first(host, printers[0]);
    Job second(host, printers[1]);
    std::string wrong = first.launch();
    if (wrong.empty()) {
        wrong = second.launch();
    }
    seen = "both answered, one job within the other";
    for (const DWORD event : {SM_OPENJOB, SM_STARTPAGE, SM_CLOSEJOB}) {
        for (Job* job : {&first, &second}) {
            wrong = wrong.empty() ? job->send(event) : wrong;
        }
    }
    return wrong;
}

namespace {

// Why this system has no pipe route, or an empty text. The library is asked: it says in the record
// which route it takes, whether or not it reaches anybody there.
std::string whyNoPipes(Host& host) {
    host.takeRoute(Route::Pipe);
    Job job(host, host.newPrinter());
    job.launchOnce();
    const bool byPipe = job.record()->dralMode == VOK_MODE_PIPE;
    job.drop();
    endCompanions();
    return byPipe ? ""
                  : "the library has no pipe route on this system (" + tools::systemVersion() + ")";
}

Result makeOne(const Check& check, Host& host) {
    host.takeRoute(check.route);
    const DWORD start = GetTickCount();
    std::string seen;
    const std::string wrong = check.make(host, seen);
    const DWORD passed = GetTickCount() - start;
    endCompanions();
    return wrong.empty() ? Result{check.name, Verdict::Pass, seen, passed}
                         : Result{check.name, Verdict::Fail, wrong, passed};
}

}  // namespace

std::vector<Result> makeChecks(Host& host, bool stop, bool quiet) {
    std::vector<Check> checks = messageChecks(host);
    const std::vector<Check> pipes = pipeChecks();
    checks.insert(checks.end(), pipes.begin(), pipes.end());
    const std::string noPipes = whyNoPipes(host);
    std::vector<Result> results;
    for (const Check& check : checks) {
        const bool skipped = check.askedBy == AskedBy::PipeRoute && !noPipes.empty();
        results.push_back(skipped ? Result{check.name, Verdict::Skip, noPipes, 0}
                                  : makeOne(check, host));
        if (!quiet) {
            tools::print(resultLine(results.back()));
        }
        if (stop && results.back().verdict == Verdict::Fail) {
            break;
        }
    }
    return results;
}

}  // namespace vok::check
