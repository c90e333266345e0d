#include "vrlkrt/java/javavalues.h"

#include "jzi/javaarray.h"
#include "qx/arrayowner.h"
#include "tether/jnicalls.h"
#include "tether/localref.h"
#include "vrlbase/exceptions.h"

#include <limits>
#include <new>
#include <string>
#include <vector>

namespace vrlkrt {

namespace {

using Norvane::vrl::vrlBaseException;

/// Cells deeper than this are refused: their conversion nests as deep.
constexpr int deepestCell = 64;

jsize javaLength(const krt::Value& value, std::size_t length) {
    if (length > static_cast<std::size_t>(std::numeric_limits<jsize>::max())) {
        value.unexpected("what fits into a Java array");
    }
    return static_cast<jsize>(length);
}

jdoubleArray newDoubles(JNIEnv* env, const double* data, jsize count) {
    jdoubleArray array = env->NewDoubleArray(count);
    if (array == nullptr) {
        tether::throwOutOfMemory(env);
    }
    env->SetDoubleArrayRegion(array, 0, count, data);
    return array;
}

/// One double[] for each row.
jobject nestedRows(JNIEnv* env, const JavaTypes& types, const krt::Value& value,
                   const krt::MatrixView<const double>& matrix) {
    const jsize columns = javaLength(value, matrix.columns());
    tether::LocalRef<jobjectArray> rows(
        env, tether::newObjectArray(env, javaLength(value, matrix.rows()), types.doubleArray));
    std::vector<double> gathered(matrix.columns());
    for (std::size_t row = 0; row < matrix.rows(); ++row) {
        for (std::size_t column = 0; column < matrix.columns(); ++column) {
            gathered[column] = matrix(row, column);
        }
        const tether::LocalRef<jdoubleArray> line(env, newDoubles(env, gathered.data(), columns));
        tether::setObjectArrayElement(env, rows.get(), static_cast<int>(row), line.get());
    }
    return rows.release();
}

jobject numbersOf(JNIEnv* env, const JavaTypes& types, const krt::Value& value) {
    const std::size_t count = qxGetNumberOfElements(value.array());
    jvalue argument;
    if (count == 1 && value.classId() == qxLOGICAL_CLASS) {
        argument.z = value.logical() ? JNI_TRUE : JNI_FALSE;
        return tether::newObjectA(env, types.boxedBoolean, types.newBoolean, &argument);
    }
    if (count == 1) {
        argument.d = value.scalar();
        return tether::newObjectA(env, types.boxedDouble, types.newDouble, &argument);
    }
    // A converted copy ends here, not with the whole call: a component may call Java in a long loop.
    const qxCallScope temporaries;
    const krt::MatrixView<const double> matrix = value.matrix();
    if (matrix.rows() == 0 && matrix.columns() == 0) {
        return nullptr;
    }
    if (matrix.rows() == 1 || matrix.columns() == 1) {
        return newDoubles(env, matrix.data(), javaLength(value, matrix.size()));
    }
    return nestedRows(env, types, value, matrix);
}

jobject textOf(JNIEnv* env, const krt::Value& value) {
    if (qxGetM(value.array()) != 1 && !qxIsEmpty(value.array())) {
        value.unexpected("a row of text");
    }
    const auto* units = static_cast<const jchar*>(value.array()->realData());
    return tether::newString(env, units, javaLength(value, qxGetNumberOfElements(value.array())));
}

jobject convert(JNIEnv* env, const JavaTypes& types, const krt::Value& value, int depth);

jobject elementsOf(JNIEnv* env, const JavaTypes& types, const krt::Value& value, int depth) {
    const krt::Cell cell = value.cell();
    if (depth == deepestCell) {
        value.unexpected("cells that nest less deep");
    }
    tether::LocalRef<jobjectArray> elements(env,
                                            tether::newObjectArray(env, javaLength(value, cell.size()), types.object));
    for (std::size_t i = 0; i < cell.size(); ++i) {
        const tether::LocalRef<jobject> element(env,
                                                cell[i].missing() ? nullptr : convert(env, types, cell[i], depth + 1));
        tether::setObjectArrayElement(env, elements.get(), static_cast<int>(i), element.get());
    }
    return elements.release();
}

jobject convert(JNIEnv* env, const JavaTypes& types, const krt::Value& value, int depth) {
    if (ojIsJavaArray(value.array())) {
        return env->NewLocalRef(jzi::heldJavaObject(value.array()));
    }
    if (value.classId() == qxCELL_CLASS) {
        return elementsOf(env, types, value, depth);
    }
    if (value.isText()) {
        return textOf(env, value);
    }
    if (!value.isNumeric() || qxIsComplex(value.array())) {
        value.unexpected("a Java object, text, a cell array, or real numbers");
    }
    return numbersOf(env, types, value);
}

qxArray* checked(qxArray* array) {
    if (array == nullptr) {
        throw std::bad_alloc();
    }
    return array;
}

/// The value of a java.lang.Number, which may be of a class with code of its own.
jdouble doubleOf(JNIEnv* env, const JavaTypes& types, jobject number) {
    const qxCallScopeSuspension outInJava;
    const jdouble value = env->CallDoubleMethodA(number, types.doubleValue, nullptr);
    tether::throwIfPending(env);
    return value;
}

qxArray* charRow(JNIEnv* env, jstring string) {
    const jsize length = env->GetStringLength(string);
    std::u16string units(static_cast<std::size_t>(length), u'\0');
    env->GetStringRegion(string, 0, length, reinterpret_cast<jchar*>(units.data()));
    tether::throwIfPending(env);
    return checked(qxCreateStringUtf16(units.data(), units.size()));
}

qxArray* row(JNIEnv* env, jdoubleArray values) {
    const jsize count = env->GetArrayLength(values);
    qxArrayOwner array(checked(qxCreateDoubleMatrix(1, static_cast<std::uint32_t>(count), qxREAL)));
    env->GetDoubleArrayRegion(values, 0, count, static_cast<double*>(array->realData()));
    tether::throwIfPending(env);
    return array.release();
}

/// Reads one row into column-major storage, through `line`, which has as many places as there are columns.
void storeRow(JNIEnv* env, jobjectArray rows, jsize number, jsize rowCount, std::vector<double>& line,
              double* storage) {
    const tether::LocalRef<jdoubleArray> values(
        env, static_cast<jdoubleArray>(tether::getObjectArrayElement(env, rows, number)));
    const auto columns = static_cast<jsize>(line.size());
    if (!values || env->GetArrayLength(values.get()) != columns) {
        throw vrlBaseException("row " + std::to_string(number) + " of the double[][] " +
                               (values ? "differs in length from the first" : "is null"));
    }
    env->GetDoubleArrayRegion(values.get(), 0, columns, line.data());
    tether::throwIfPending(env);
    for (jsize column = 0; column < columns; ++column) {
        storage[static_cast<std::size_t>(column) * static_cast<std::size_t>(rowCount) +
                static_cast<std::size_t>(number)] = line[static_cast<std::size_t>(column)];
    }
}

/// Length of the first row; 0 when there is none.
jsize columnsOf(JNIEnv* env, jobjectArray rows, jsize rowCount) {
    const tether::LocalRef<jobject> first(env, rowCount == 0 ? nullptr : tether::getObjectArrayElement(env, rows, 0));
    return first ? env->GetArrayLength(static_cast<jarray>(first.get())) : 0;
}

qxArray* matrix(JNIEnv* env, jobjectArray rows) {
    const jsize rowCount = env->GetArrayLength(rows);
    const jsize columns = columnsOf(env, rows, rowCount);
    qxArrayOwner array(checked(
        qxCreateDoubleMatrix(static_cast<std::uint32_t>(rowCount), static_cast<std::uint32_t>(columns), qxREAL)));
    std::vector<double> line(static_cast<std::size_t>(columns));
    for (jsize number = 0; number < rowCount; ++number) {
        storeRow(env, rows, number, rowCount, line, static_cast<double*>(array->realData()));
    }
    return array.release();
}

qxArray* wrapped(JNIEnv* env, jobject object) {
    jobject global = env->NewGlobalRef(object);
    qxArray* array = global == nullptr ? nullptr : jzi::makeJavaArray(global);
    if (array == nullptr) {
        env->DeleteGlobalRef(global);
        throw std::bad_alloc();
    }
    return array;
}

}  // namespace

jobject javaValueOf(JNIEnv* env, const JavaTypes& types, const krt::Value& value) {
    return convert(env, types, value, 0);
}

qxArray* arrayOf(JNIEnv* env, const JavaTypes& types, jobject value) {
    const auto is = [env, value](jclass cls) { return env->IsInstanceOf(value, cls) != JNI_FALSE; };
    if (value == nullptr) {
        return checked(qxCreateDoubleMatrix(0, 0, qxREAL));
    }
    if (is(types.number)) {
        return checked(qxCreateDoubleScalar(doubleOf(env, types, value)));
    }
    if (is(types.boxedBoolean)) {
        const jboolean truth = tether::callMethodA<jboolean>(env, value, types.booleanValue, nullptr);
        return checked(qxCreateLogicalScalar(truth != JNI_FALSE));
    }
    if (is(types.string)) {
        return charRow(env, static_cast<jstring>(value));
    }
    if (is(types.doubleArray)) {
        return row(env, static_cast<jdoubleArray>(value));
    }
    if (is(types.doubleArrayArray)) {
        return matrix(env, static_cast<jobjectArray>(value));
    }
    return wrapped(env, value);
}

}  // namespace vrlkrt
