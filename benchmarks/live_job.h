// A job on the real system: real registry, real log file, the sample companions.
#pragma once
#include <string>

#include "cases.h"
#include "sim/import_table.h"

namespace vok::bench {

// Files of the program's own folder: library, floor, companions.
std::string ownFile(const std::string& name);

// The library or the floor as the system's loader loads it. Its pauses are answered at once; with
// `apart` it finds itself in another session than the user.
class LiveModule {
  public:
    LiveModule(const std::string& fileName, bool apart);
    const Exports& exports() const { return exports_; }

  private:
    HMODULE module_;
    test::ImportTable imports_;
    Exports exports_;
};

// The companions of one printer, started here and ended again.
class Companions {
  public:
    explicit Companions(std::string printer);
    ~Companions();
    Companions(const Companions&) = delete;
    Companions& operator=(const Companions&) = delete;
    const std::string& printer() const { return printer_; }
    HWND dral() const { return dral_; }
    HWND nemb() const { return nemb_; }

  private:
    static HWND start(const std::string& name, const std::string& printer);

    std::string printer_;
    HWND dral_;
    HWND nemb_;
};

// Writes the logger's options; the log starts anew.
void setLiveLogging(Logging logging);

// What the calls of one case need before each of them.
class LiveJob {
  public:
    LiveJob(const Case& one, const Companions& companions);
    ~LiveJob();
    LiveJob(const LiveJob&) = delete;
    LiveJob& operator=(const LiveJob&) = delete;

    void prepare();
    void perform(const Exports& exports);

    // A pipe whose other end the companion has opened.
    static HANDLE connectedPipe(const std::string& name);

  private:
    void preparePipes();
    void takeOverPipes();

    const Case& one_;
    Job job_;
    VKDATA record_{};
    bool answerIsDue_ = false;
};

}  // namespace vok::bench
