// What the tests of the log reader share.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace vok::test {

// A file of its own that ends with the object.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& ending = ".log");
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& path() const { return path_; }
    void write(const std::string& text) const;
    std::string read() const;

  private:
    std::string path_;
};

struct RunResult {
    int status = -1;
    std::string out;
    std::string error;
    long peakMemory = 0;  // KiB
};

// Runs vok-log with these arguments and waits for its end.
RunResult runReader(const std::vector<std::string>& arguments, const std::string& input = "");

// Its account as JSON of a log of that text.
nlohmann::json accountOf(const std::string& log, std::vector<std::string> arguments = {});

std::string readFile(const std::string& path);
std::string dataFile(const std::string& name);

}  // namespace vok::test
