// A machine, a job and a sequence of calls made up by a seed: the same seed, the same world.
#pragma once
#include <vok/vok.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <random>
#include <string>

#include "faults/restarted_library.h"
#include "sim/guarded_bytes.h"
#include "sim/sim.h"

namespace vok::test {

class Chance {
  public:
    explicit Chance(uint64_t seed) : engine_(seed) {}

    size_t below(size_t end) { return static_cast<size_t>(engine_() % end); }
    bool oneIn(size_t n) { return below(n) == 0; }
    DWORD number() { return static_cast<DWORD>(engine_()); }
    template <class T>
    T of(std::initializer_list<T> choices) {
        return choices.begin()[below(choices.size())];
    }
    std::string bytes(size_t size);
    // A name as somebody might give it: ordinary, empty, long, of odd characters; no line breaks.
    std::string name();

  private:
    std::mt19937_64 engine_;
};

// What is handed to the library, in guarded memory; null where a null is allowed.
class RandomJob {
  public:
    RandomJob(Chance& chance, System& system);

    VKDATA* record() const { return record_ ? static_cast<VKDATA*>(record_->data()) : nullptr; }
    const char* printer() const { return text(printer_); }
    const char* port() const { return text(port_); }
    const void* block() const { return block_ ? block_->data() : nullptr; }
    bool isIntact() const { return !record_ || record_->isIntact(); }

  private:
    using Guarded = std::unique_ptr<GuardedBytes>;
    static const char* text(const Guarded& bytes) {
        return bytes ? static_cast<const char*>(bytes->data()) : nullptr;
    }

    Guarded record_;
    Guarded printer_;
    Guarded port_;
    Guarded block_;
};

// One of the nine systems.
const OsRelease& randomRelease(Chance& chance);

// Fills registry, printers, windows, pipes, sessions and the configuration library with anything
// that the library may meet.
void fillMachine(Chance& chance, System& system);

// Arms a few failures.
void armFaults(Chance& chance, System& system);

// One call of any export.
void callAny(Chance& chance, const Exports& library, const RandomJob& job);

}  // namespace vok::test
