#include "faults/faultsweep.h"
#include "krt/component.h"

#include <filesystem>
#include <fstream>

// The one native whose exported name is not the one in the generated header.
extern "C" jstring NVKRT(getenv__Ljava_lang_String_2)(JNIEnv*, jclass, jstring);

namespace nativevrl::test {

namespace {

constexpr const char* runtimeFailure = "com/norvane/toolbox/loomkit/NVException";

TEST_F(FaultSweep, Lifecycle) {
    jobjectArray options = objectArray(env, "java/lang/String", {javaString(env, u"-nodisplay"), nullptr});
    jobjectArray refused = objectArray(env, "java/lang/String", {javaString(env, u"-fast")});
    const std::vector<jbyte> archive = showcaseArchive();
    Request request;
    const std::string extracted = folder / "swept";
    request.extractTo = javaPath(env, extracted);
    request.first = warnings;
    request.second = ordinaryOutput;
    const auto create = [&] { return initializeInstance(env, request); };
    const auto withLength = [&](std::size_t length) {
        return [&, length] {
            request.length = static_cast<jint>(length);
            request.archive = chunkedStream(env, archive, 16384);
        };
    };
    const auto withoutFolder = [&, fill = withLength(archive.size())] {
        std::filesystem::remove_all(extracted);
        fill();
    };
    const auto withEarlierFolder = [&, fill = withLength(archive.size())] {
        std::ofstream(extracted + "/component.json", std::ios::app) << ' ';
        fill();
    };
    const auto drop = [&] { NVKRT(vrlResetDefaultPrintHandlers)(env, nullptr); };
    const auto keep = native(NVKRT(vrlSetDefaultPrintHandlers), warnings, ordinaryOutput);
    const auto print = [](JNIEnv*, jclass) { krtPrint(nullptr, "text"); };
    sweep(
        {
            {"start", Gives::nothing, native(NVKRT(vrlInitializeApplication), options)},
            {"refused start", Gives::failure, native(NVKRT(vrlInitializeApplication), refused)},
            {"getenv", Gives::object, native(NVKRT(getenv__Ljava_lang_String_2), javaString(env, u"PATH"))},
            {"vrlGetLogFileName", Gives::object, native(NVKRT(vrlGetLogFileName))},
            {"vrlInitializeComponentInstance", Gives::instance, create, withoutFolder},
            {"an instance of what is there", Gives::instance, create, withLength(archive.size())},
            {"an instance in place of an earlier one", Gives::instance, create, withEarlierFolder},
            {"half an archive", Gives::failure, create, withLength(5000)},
            {"vrlGetActiveKRT", Gives::address, native(NVKRT(vrlGetActiveKRT))},
            {"vrlWaitForFiguresToDie", Gives::nothing, native(NVKRT(vrlWaitForFiguresToDie), instance)},
            {"vrlSetDefaultPrintHandlers", Gives::nothing, keep, [] {}, drop},
            {"printing", Gives::nothing, native(print), [&] { keep(); }, drop},
        },
        runtimeFailure);
}

TEST_F(FaultSweep, Evaluation) {
    const std::string reference = "com/norvane/toolbox/loomkit/NVJavaObjectRef";
    jobject held = newObject(env, reference, "(Ljava/lang/Object;)V", {objectArgument(javaString(env, u"held"))});
    jobject rows = nested<jdouble>(env, {{1, 2}, {3, 4}});
    jobjectArray results = nullptr;
    jobject outputs = nullptr;
    jobject inputs = nullptr;
    const auto close = [&] {
        for (std::size_t i = 0; i < lengthOf(env, results); ++i) {
            jobject result = elementAt(env, results, i);
            if (result != nullptr && classNameOf(env, result) != reference) {
                callVoid(env, result, "close", "()V");
            }
        }
    };
    const auto evaluation = [&](Gives gives, const char16_t* function, const std::vector<jobject>& with, jint nlhs) {
        const auto prepare = [=, &results, &outputs, &inputs] {
            results = objects(std::vector<jobject>(static_cast<std::size_t>(nlhs)));
            outputs = places(env, results);
            inputs = places(env, objects(with));
        };
        jstring name = javaString(env, function);
        const auto call = native(NVKRT(vrlFeval), instance, name, nlhs, std::ref(outputs),
                                 static_cast<jint>(with.size()), std::ref(inputs));
        return Native{"vrlFeval of " + toText(env, name), gives, call, prepare, close};
    };
    sweep(
        {
            evaluation(Gives::failure, u"fail_deep", {javaString(env, u"too deep")}, 1),
            evaluation(Gives::nothing, u"count", {rows, javaString(env, u"x"), objects({boxed<jint>(env, 1)})}, 2),
            evaluation(Gives::nothing, u"same", {held}, 1),
            evaluation(Gives::nothing, u"handle_of", {javaString(env, u"count")}, 1),
            evaluation(Gives::nothing, u"count", std::vector<jobject>(12, rows), 12),
        },
        runtimeFailure);
}

TEST_F(FaultSweep, Arrays) {
    constexpr jint doubles = qxDOUBLE_CLASS;
    constexpr jint complex = qxCOMPLEX;
    const jboolean real = JNI_TRUE;
    jintArray ones = intArray(env, {1, 1});
    jobject rows = nested<jdouble>(env, {{1, 2}, {3, 4}});
    jobject values = primitiveArray<jdouble>(env, {1});
    jobject numbers = objectArray(env, "java/lang/Number", {boxed<jdouble>(env, 2.5)});
    jobject mixed = objects({boxed<jint>(env, 1), javaString(env, u"2.5"), boxed<jboolean>(env, JNI_TRUE)});
    jobjectArray strings = objectArray(env, "java/lang/String", {javaString(env, u"one"), javaString(env, u"three")});
    jobject cell = javaCell(env, {1, 2}, {rows, javaString(env, u"x")});
    jobject record = javaStruct(env, {1, 1}, {u"a", u"b"}, {boxed<jfloat>(env, 1), cell});
    jstring field = javaString(env, u"second");
    auto bytes = NVKRT(qxSerialize)(env, nullptr, record_);
    const auto fromIndices = NVKRT(qxCreateSparseMatrix___3I_3ILjava_lang_Object_2Ljava_lang_Object_2IIIII);
    const auto fromRows = NVKRT(qxCreateSparseMatrix__Ljava_lang_Object_2Ljava_lang_Object_2II);
    const auto fieldSubscript = NVKRT_OF_HANDLE(qxCalcStructSingleSubscript, Ljava_lang_String_2_3I);
    const auto setObject = NVKRT_OF_HANDLE(qxSetAt, ILjava_lang_Object_2Z);
    const auto convert = NVKRT(qxObject2qxArray);
    const auto scratch = std::ref(scratch_);
    sweep({
        {"qxCreateEmptyArray", Gives::array, native(NVKRT(qxCreateEmptyArray), doubles)},
        {"qxCreateSharedCopy", Gives::array, native(NVKRT(qxCreateSharedCopy), matrix_)},
        {"qxDuplicateArray", Gives::array, native(NVKRT(qxDuplicateArray), cell_)},
        {"qxDeserialize", Gives::array, native(NVKRT(qxDeserialize), bytes)},
        {"qxCreateArray", Gives::array, native(NVKRT(qxCreateArray), ones, doubles, complex)},
        {"numeric", Gives::array, native(NVKRT(qxCreateNumericArray), ones, numbers, values, doubles, complex)},
        {"indices", Gives::array, native(fromIndices, ones, ones, values, nullptr, 3, 3, 2, doubles, complex)},
        {"sparse rows", Gives::array, native(fromRows, rows, rows, doubles, complex)},
        {"primitive rows", Gives::array, native(convert, rows, rows, doubles, complex)},
        {"objects", Gives::array, native(convert, mixed, mixed, static_cast<jint>(qxINT16_CLASS), complex)},
        {"logicals", Gives::array, native(convert, mixed, nullptr, static_cast<jint>(qxLOGICAL_CLASS), complex)},
        {"strings", Gives::array, native(convert, strings, nullptr, static_cast<jint>(qxCHAR_CLASS), complex)},
        {"Java cell", Gives::array, native(convert, cell, nullptr, static_cast<jint>(qxCELL_CLASS), complex)},
        {"Java struct", Gives::array, native(convert, record, nullptr, static_cast<jint>(qxSTRUCT_CLASS), complex)},
        {"qxArrayToDoubleArray", Gives::object, native(NVKRT(qxArrayToDoubleArray), matrix_, real)},
        {"sparse to bytes", Gives::object, native(NVKRT(qxArrayToByteArray), sparse_, real)},
        {"qxGetIntData", Gives::object, native(NVKRT(qxGetIntData), matrix_, real)},
        {"boxed", Gives::object, native(NVKRT(qxArrayToDoubleObjectArray), matrix_, real)},
        {"qxArrayToStringArray", Gives::object, native(NVKRT(qxArrayToStringArray), matrix_, real)},
        {"qxGetStringData", Gives::object, native(NVKRT(qxGetStringData), text_, real)},
        {"qxArray2ObjectArray", Gives::object, native(NVKRT(qxArray2ObjectArray), matrix_, real)},
        {"qxArrayToString", Gives::object, native(NVKRT(qxArrayToString), text_)},
        {"qxGetDimensions", Gives::object, native(NVKRT(qxGetDimensions), matrix_)},
        {"qxGetFieldNames", Gives::object, native(NVKRT(qxGetFieldNames), record_)},
        {"qxGetIndexArray", Gives::object, native(NVKRT(qxGetIndexArray), matrix_, 0)},
        {"qxGetData", Gives::object, native(NVKRT(qxGetData), matrix_, real)},
        {"qxGetObjectAt", Gives::object, native(NVKRT_OF_HANDLE(qxGetObjectAt, _3IZ), matrix_, ones, real)},
        {"qxGetDoubleAt", Gives::nothing, native(NVKRT_OF_HANDLE(qxGetDoubleAt, _3IZ), sparse_, ones, real)},
        {"qxCalcSingleSubscript", Gives::nothing, native(NVKRT(qxCalcSingleSubscript), matrix_, ones)},
        {"qxGetFieldNumber", Gives::nothing, native(NVKRT(qxGetFieldNumber), record_, field)},
        {"qxCompareArray", Gives::nothing, native(NVKRT(qxCompareArray), matrix_, cell_)},
        {"qxGetCell", Gives::wrapper, native(NVKRT(qxGetCell), cell_, 1)},
    });
    sweep(
        {
            {"scalar", Gives::array, native(NVKRT(qxScalar2qxArray__DDII), 1.0, 2.0, doubles, complex)},
            {"qxCreateStructArray", Gives::array, native(NVKRT(qxCreateStructArray), ones, strings)},
            {"field subscript", Gives::nothing, native(fieldSubscript, record_, field, ones)},
        },
        "java/lang/RuntimeException");
    original_ = matrix_;
    sweep({
        {"qxSetAt", Gives::edit, native(NVKRT_OF_HANDLE(qxSetAt, _3IDZ), scratch, ones, 3.0, real)},
        {"qxSetData", Gives::edit, native(NVKRT(qxSetData), scratch, primitiveArray<jfloat>(env, {1, 2}), real)},
        {"qxDestroyArray", Gives::end, native(NVKRT_OF_HANDLE(qxDestroyArray, ), scratch)},
    });
    sweep({{"qxSetAt of an object", Gives::edit, native(setObject, scratch, 1, javaString(env, u"2.5"), real)}},
          "java/lang/RuntimeException");
    original_ = cell_;
    sweep({{"qxSetCell", Gives::edit, native(NVKRT(qxSetCell), scratch, 1, rows)}});
    original_ = sparse_;
    sweep({{"sparse qxSetAt", Gives::edit, native(NVKRT_OF_HANDLE(qxSetAt, IDZ), scratch, 1, 3.0, real)}});
}

}  // namespace

}  // namespace nativevrl::test
