#include "in_process.h"

#include <string>
#include <vector>

#include "log_reader.h"
#include "support.h"

namespace vok::test {

namespace {

class Collector final : public log::Sink {
  public:
    explicit Collector(std::vector<log::Job>& jobs) : jobs_(jobs) {}
    void job(const log::Job& job) override { jobs_.push_back(job); }

  private:
    std::vector<log::Job>& jobs_;
};

}  // namespace

Reading readHere(const std::string& bytes) {
    static const TemporaryFile file;
    file.write(bytes);
    Reading reading;
    Collector collector(reading.jobs);
    log::ReaderOptions options;
    options.keepLines = true;
    log::LogReader reader(options, collector, [](const log::Progress&) {});
    reading.summary = reader.read({file.path()});
    return reading;
}

}  // namespace vok::test
