/// Natives that set where the runtime prints outside of an evaluation.

#include "entry/javaprinthandler.h"
#include "entry/librarystate.h"
#include "vrlkrt/vrlkrt.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

#include <exception>

using namespace nativevrl;

namespace {

int dropText(const char*) { return 0; }

}  // namespace

// The one native that lets no failure out at all: a pending Java exception stays, anything else is dropped.
void Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlSetDefaultPrintHandlers(JNIEnv*, jclass, jobject first,
                                                                                jobject second) {
    try {
        const vrlPrintHandler secondHandler = JavaPrintHandler(*sharedEnvInjector, second);
        const vrlPrintHandler firstHandler = JavaPrintHandler(*sharedEnvInjector, first);
        vrlSetDefaultPrintHandlers(firstHandler, secondHandler);
    } catch (const std::exception&) {
        return;
    }
}

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlResetDefaultPrintHandlers(JNIEnv*, jclass) {
    vrlSetDefaultPrintHandlers(&dropText, &dropText);
}
