#pragma once

/// The runtime: component archives and instances, evaluation, printing, text and hashes of arrays.
///
/// What an operation throws is said at its group. Memory that runs out is vrlBaseException::outOfMemory.

#include "krt/krtinstance.h"
#include "pathkit/dspathstring.h"
#include "qx/qx.h"
#include "vrlkrt/kpaextractor.h"

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <cstdint>
#include <iosfwd>

/// A component whose files lie in a folder and are whole.
class vrlExtractedComponent;

using vrlPrintHandler = boost::function<int(const char*)>;
using vrlExtractedComponentFactory = boost::function0<boost::shared_ptr<vrlExtractedComponent>>;

bool vrlIsStandaloneMode();

/// Registers a macro for component paths. Both strings are read during the call only.
void vrlAddCanonicalPathMacro(const char* name, const char* path);

// ---- Archives. Each throws vrlBaseException, naming the entry and what is wrong with it, or vrlInternalException.

/// An extractor that fails when it is used; `component` (may be null) is named in its message.
vrlkrt::KpaExtractor vrlMakeAlwaysFailExtractor(const char* component);
vrlkrt::KpaExtractor vrlMakeKpaStreamExtractor(boost::shared_ptr<std::istream> archive);
/// A stream over a copy of the bytes.
boost::shared_ptr<std::istream> vrlGetKpaStreamFromArraySrc(char* bytes, int length);
vrlExtractedComponentFactory vrlMakeComponentCacheExtractedComponentFactory(vrlkrt::KpaExtractor extractor);
/// `folder` comes with backslashes for separators; on a platform of slashes each becomes a slash.
vrlExtractedComponentFactory vrlMakeDirectoryExtractedComponentFactory(vrlkrt::KpaExtractor extractor,
                                                                       const dsPathString_<dsMBCSSafeString>& folder);

// ---- Instances. Each throws vrlBaseException or vrlInternalException. A handle is checked: 0, a foreign or a stale
// one is a vrlBaseException.

/// Creates an instance and returns its handle. The first handler gets errors and warnings, the second ordinary output.
void* vrlInitializeComponentInstance(const vrlPrintHandler& first, const vrlPrintHandler& second,
                                     const vrlExtractedComponentFactory& factory);
/// Ends an instance. Waits for nobody: an evaluation under way keeps the component's code until it returns.
void vrlTerminateInstanceInternal(void* handle);
bool vrlWaitForFiguresToDieInternal(void* handle, bool force);
/// The instance whose function runs on this thread, or else the one created last that lives; null when there is none.
void* vrlGetActiveHKRTINSTANCE();
/// What wraps Java objects for the instance. It stays good after the instance's end.
krtInstance* vrlHandleToKrtInstancePtr(void* handle);

/// Runs a function. Writes up to `nlhs` arrays into `plhs`, which are the caller's and share no storage with an
/// input; the rest stay null. `prhs` stays the caller's. Throws vrlBaseException with the stack of component
/// functions, or vrlInternalException. The instance stays for the length of the call, whoever ends it meanwhile.
void vrlLoomkitFeval(void* handle, const char* name, int nlhs, qxArray** plhs, int nrhs, qxArray** prhs);

// ---- Printing outside of an evaluation

/// Stores copies; the first gets errors and warnings, the second ordinary output. When there is no memory for them
/// there are no handlers any more: text goes to the log.
void vrlSetDefaultPrintHandlers(const vrlPrintHandler& first, const vrlPrintHandler& second);

// ---- Text and hashes

/// The display form of an array in a buffer that vrlcppFreeString frees. 0 on success.
int vrlcppArrayToString(const qxArray* array, char** text);
void vrlcppFreeString(char* text);

/// XXH32 of the bytes with `seed`.
std::uint32_t vrlHashNBytes(std::uint32_t seed, std::size_t count, const void* bytes);
