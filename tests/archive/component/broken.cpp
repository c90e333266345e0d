#include <cstdlib>

extern "C" void nobodyDefinesThis();

#if defined(UNDEFINED)
extern "C" void version() { nobodyDefinesThis(); }
#else
extern "C" void version() {}

namespace {

struct EndsTheProcess {
    EndsTheProcess() {
#if defined(CRASHING)
        std::abort();
#else
        std::_Exit(0);
#endif
    }
} const endsTheProcess;

}  // namespace
#endif
