/* A component in C. */

#include "krt/component.h"

#include <string.h>

KRT_EXPORT void scale(krtCall* call, int nlhs, qxArray** plhs, int nrhs, qxArray* const* prhs) {
    const double* values = nrhs == 2 ? krtDoubles(prhs[0]) : NULL;
    size_t rows, columns, i;
    (void)nlhs;
    if (values == NULL) {
        krtFail(call, "scale:arguments", "a matrix and a factor are expected", __FILE__, 12);
        return;
    }
    rows = krtRows(prhs[0]);
    columns = krtColumns(prhs[0]);
    plhs[0] = krtMakeDoubleMatrix(rows, columns);
    for (i = 0; i < rows * columns; ++i) {
        krtDoubles(plhs[0])[i] = values[i] * krtScalar(prhs[1]);
    }
}

/* Calls scale without arguments; on "pass" the failure goes on, on "drop" its text is the result. */
KRT_EXPORT void relay(krtCall* call, int nlhs, qxArray** plhs, int nrhs, qxArray* const* prhs) {
    char* mode = nrhs == 1 ? krtText(prhs[0]) : NULL;
    qxArray* result = NULL;
    krtFailure* failure = krtCallFunction(call, "scale", 1, &result, 0, NULL, __FILE__, 30);
    (void)nlhs;
    if (failure != NULL && mode != NULL && strcmp(mode, "pass") == 0) {
        krtFailWith(call, failure);
    } else if (failure != NULL) {
        plhs[0] = krtMakeText(krtFailureMessage(failure));
    }
    krtReleaseFailure(failure);
    krtFreeText(mode);
}
