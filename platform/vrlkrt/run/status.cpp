#include "vrlbase/runtime.h"
#include "vrlkrt/vrlkrt.h"

bool vrlIsStandaloneMode() { return true; }

void vrlAddCanonicalPathMacro(const char* name, const char* path) { vrlSetPathMacro(name, path); }
