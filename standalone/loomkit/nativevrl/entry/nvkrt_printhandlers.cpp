/// Natives that set where the runtime prints outside of an evaluation.

#include "boundary/boundary.h"
#include "entry/javaprinthandler.h"
#include "entry/librarystate.h"
#include "vrlkrt/vrlkrt.h"

#include "com_norvane_toolbox_loomkit_internal_NVKRT.h"

using namespace nativevrl;

namespace {

int dropText(const char*) { return 0; }

}  // namespace

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlSetDefaultPrintHandlers(JNIEnv*, jclass, jobject errors,
                                                                                jobject ordinary) {
    unreported([&] {
        const vrlPrintHandler ordinaryHandler = JavaPrintHandler(*sharedEnvInjector, ordinary);
        const vrlPrintHandler errorHandler = JavaPrintHandler(*sharedEnvInjector, errors);
        vrlSetDefaultPrintHandlers(errorHandler, ordinaryHandler);
    });
}

void Java_com_norvane_toolbox_loomkit_internal_NVKRT_vrlResetDefaultPrintHandlers(JNIEnv*, jclass) {
    vrlSetDefaultPrintHandlers(&dropText, &dropText);
}
