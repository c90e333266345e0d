#ifndef KRT_COMPONENT_H
#define KRT_COMPONENT_H

/* What a component sees of the runtime, in C. C++ authors include krt/component.hpp, which stands on this.
 *
 * A component is a shared object whose functions have the entry shape krtEntry. Inputs (`prhs`, `nrhs` of
 * them) are borrowed and must not be changed. Results go into `plhs`, which has room for `nlhs` arrays, and
 * for one when `nlhs` is 0; they start as null. Arrays that a function makes belong to its call and die with
 * it, apart from those in `plhs`: nothing needs to be freed. A result that is an input, or shares storage
 * with one, is copied on its way to the caller.
 *
 * A function fails by krtFail (or by returning after krtFailWith). No exception may leave a C entry.
 * `krtCall*` is good for the thread and the duration of the call only; a krtPrinter works anywhere.
 * Text is UTF-8, also in modified form. Row, column and element numbers are zero-based. */

#include <stddef.h>
#include <stdint.h>

/* The version of this interface; stands as "abi" in component.json. */
#define KRT_ABI 1

#define KRT_EXPORT __attribute__((visibility("default")))

#ifdef __cplusplus
class qxArray;
extern "C" {
#else
typedef struct qxArray qxArray;
#endif

/* NOLINTBEGIN(modernize-use-using): the header is C as well. */
typedef struct krtCall krtCall;
typedef struct krtPrinter krtPrinter;
typedef struct krtFailure krtFailure;

typedef void (*krtEntry)(krtCall* call, int nlhs, qxArray** plhs, int nrhs, qxArray* const* prhs);
/* NOLINTEND(modernize-use-using) */

/* The call that runs on this thread; null on a thread of the component's own. */
krtCall* krtCurrentCall(void);
/* Name of the function that a call runs; valid as long as the call. */
const char* krtFunctionName(const krtCall* call);

/* ---- Failures */

/* Makes the call fail once the function returns. The identifier has the form "component:what" and may be null.
 * `file` and `line` tell where in the source. */
void krtFail(krtCall* call, const char* identifier, const char* message, const char* file, int line);

/* A failure as a value, with the stack of the frames that are open now. Never null; ended with krtReleaseFailure.
 * `call` may be null: the stack is then the one line given. */
krtFailure* krtMakeFailure(krtCall* call, const char* identifier, const char* message, const char* file, int line);
/* Makes the call fail with a copy of a failure. */
void krtFailWith(krtCall* call, const krtFailure* failure);
krtFailure* krtShareFailure(krtFailure* failure);
void krtReleaseFailure(krtFailure* failure);
/* Texts of a failure, valid as long as it; the identifier may be "". */
const char* krtFailureMessage(const krtFailure* failure);
const char* krtFailureIdentifier(const krtFailure* failure);

/* ---- Frames: lines of the stack that a failure shows. Every call has one for its function. */

/* Opens a frame. `function` and `file` are copied. */
void krtEnterFrame(krtCall* call, const char* function, const char* file, int line);
/* Closes the innermost frame. `unwinding` is not 0 when an exception passes; its line then stays for that failure. */
void krtLeaveFrame(krtCall* call, int unwinding);
/* Tells the line at which the innermost frame stands. */
void krtMarkLine(krtCall* call, const char* file, int line);

/* ---- Printing. Texts go out as they are, without a line end added. */

void krtPrint(krtCall* call, const char* text);
/* "Warning: ", the message and a line end, to where errors and warnings go. */
void krtWarn(krtCall* call, const char* message);

/* The way to print for the instance of this call, from any thread and for as long as the printer is held. Ended
 * with krtReleasePrinter. After the instance's end, texts go to the log. */
krtPrinter* krtGetPrinter(krtCall* call);
krtPrinter* krtSharePrinter(krtPrinter* printer);
void krtReleasePrinter(krtPrinter* printer);
void krtPrinterPrint(krtPrinter* printer, const char* text);
void krtPrinterWarn(krtPrinter* printer, const char* message);

/* ---- Calls. Each gives null on success, and otherwise a failure that the caller ends: it may be passed on with
 * krtFailWith, or dropped. Results belong to the caller's call. `file` and `line` are where the call stands. */

/* Runs another function of the component. `plhs` has room for `nlhs` arrays, which start as null. */
krtFailure* krtCallFunction(krtCall* call, const char* name, int nlhs, qxArray** plhs, int nrhs, qxArray* const* prhs,
                            const char* file, int line);
/* Runs the function of a function handle. */
krtFailure* krtCallHandle(krtCall* call, const qxArray* handle, int nlhs, qxArray** plhs, int nrhs,
                          qxArray* const* prhs, const char* file, int line);
/* Calls a public method of a wrapped Java object. Scalars go as java.lang.Double or Boolean, char rows as String,
 * vectors as double[], matrices as double[][], wrapped objects as themselves, empty double arrays as null.
 * `*result` is a double or logical scalar, a char row, a row, a matrix, 0-by-0 for null or void, and a wrapped
 * object for anything else. A Java exception is a failure whose message holds its text. */
krtFailure* krtCallJava(krtCall* call, const qxArray* object, const char* method, int nrhs, qxArray* const* prhs,
                        qxArray** result, const char* file, int line);
/* Whether an array wraps a Java object; null does not. */
int krtIsJavaObject(const qxArray* array);

/* ---- Arrays, for C authors. Numbers are real and dense; what an array is not gives 0 or null. */

/* Class number: 1 cell, 2 struct, 3 logical, 4 char, 6 double, 7 single, 8 to 15 int8, uint8, … uint64. */
int krtClassOf(const qxArray* array);
/* Extents; columns are all elements divided by the rows. */
size_t krtRows(const qxArray* array);
size_t krtColumns(const qxArray* array);
/* Column-major elements of a dense double array, borrowed; writable in an array that this call made. */
double* krtDoubles(const qxArray* array);
/* First element of a numeric or logical array as a double; NaN when there is none. */
double krtScalar(const qxArray* array);
/* A char array as UTF-8 with a NUL, freed with krtFreeText; null when it is none, or memory runs out. */
char* krtText(const qxArray* array);
void krtFreeText(char* text);
qxArray* krtMakeDoubleMatrix(size_t rows, size_t columns);
qxArray* krtMakeScalar(double value);
qxArray* krtMakeText(const char* text);
qxArray* krtMakeFunctionHandle(const char* name);

#ifdef __cplusplus
}
#endif

#endif
