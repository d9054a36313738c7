#include "support/critical_section.h"

namespace vok {

CriticalSection::CriticalSection() {
    InitializeCriticalSection(&section_);
}

CriticalSection::~CriticalSection() {
    DeleteCriticalSection(&section_);
}

void CriticalSection::enter() {
    EnterCriticalSection(&section_);
    ++depth_;
}

void CriticalSection::leave() {
    --depth_;
    LeaveCriticalSection(&section_);
}

}  // namespace vok
