// The runtime's default handler for an exception that nobody catches prints the exception's type
// and carries a decoder of type names for it, a third of the library's size. Ours ends the process.

#include <exception>

#include "runtime/end_process.h"

namespace __gnu_cxx {

void __verbose_terminate_handler() {
    vok::endProcess(vok::FastFail::FatalAppExit);
}

}  // namespace __gnu_cxx
