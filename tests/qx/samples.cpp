#include "samples.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

template <typename Element>
void store(void* block, std::initializer_list<Element> elements) {
    std::copy(elements.begin(), elements.end(), static_cast<Element*>(block));
}

template <typename Element>
Sample numeric(std::string name, qxClassID classId, std::initializer_list<Element> elements, const std::string& json) {
    const auto count = static_cast<std::uint32_t>(elements.size());
    qxArrayOwner array(qxCreateNumericMatrix(1, count, classId, qxREAL));
    store(array->realData(), elements);
    return {std::move(name), std::move(array),
            "{\"class\":" + std::to_string(classId) + ",\"extents\":[1," + std::to_string(count) +
                "],\"real\":" + json + "}"};
}

Sample complexMatrix() {
    qxArrayOwner array(qxCreateDoubleMatrix(2, 2, qxCOMPLEX));
    store(array->realData(), {1.5, 2.0, -3.0, HUGE_VAL});
    store(array->imagData(), {0.0, -1.0, 0.25, -HUGE_VAL});
    return {"complex", std::move(array),
            R"({"class":6,"extents":[2,2],"real":[1.5,2,-3,"Infinity"],"imag":[0,-1,0.25,"-Infinity"]})"};
}

Sample pages() {
    const std::uint32_t extents[] = {2, 1, 3, 1};
    qxArrayOwner array(qxCreateNumericArray(4, extents, qxINT16_CLASS, qxREAL));
    store<std::int16_t>(array->realData(), {1, -2, 300, -300, 32767, -32768});
    return {"pages", std::move(array), R"({"class":10,"extents":[2,1,3,1],"real":[1,-2,300,-300,32767,-32768]})"};
}

Sample sparse(std::string name, bool complex) {
    qxArrayOwner array(qxCreateSparse(4, 3, 10, complex ? qxCOMPLEX : qxREAL));
    store<std::uint32_t>(array->columnStartTable(), {0, 2, 2, 3});
    store<std::uint32_t>(array->rowIndexTable(), {0, 3, 1});
    store(array->realData(), {1.0, 0.0, -7.5});
    std::string json = R"({"class":6,"extents":[4,3],"columnStart":[0,2,2,3],"rowIndex":[0,3,1],"real":[1,0,-7.5])";
    if (complex) {
        store(array->imagData(), {0.0, 2.0, 4.0});
        json += R"(,"imag":[0,2,4])";
    }
    return {std::move(name), std::move(array), json + "}"};
}

Sample sparseLogical() {
    qxArrayOwner array(qxCreateSparseLogicalMatrix(300, 2, 1));
    store<std::uint32_t>(array->columnStartTable(), {0, 0, 1});
    store<std::uint32_t>(array->rowIndexTable(), {299});
    store<std::uint8_t>(array->realData(), {1});
    return {"sparse-logical", std::move(array),
            R"({"class":3,"extents":[300,2],"columnStart":[0,0,1],"rowIndex":[299],"real":[1]})"};
}

Sample nestedCell() {
    qxArrayOwner inner(qxCreateCellMatrix(1, 1));
    qxSetCell(inner.get(), 0, qxCreateDoubleScalar(-0.5));
    qxArrayOwner array(qxCreateCellMatrix(2, 2));
    qxSetCell(array.get(), 0, qxCreateString("a\xC3\xA9"));
    qxSetCell(array.get(), 1, inner.release());
    qxSetCell(array.get(), 3, qxCreateLogicalScalar(true));
    return {"cell", std::move(array),
            R"({"class":1,"extents":[2,2],"slots":[{"class":4,"extents":[1,2],"real":[97,233]},)"
            R"({"class":1,"extents":[1,1],"slots":[{"class":6,"extents":[1,1],"real":[-0.5]}]},null,)"
            R"({"class":3,"extents":[1,1],"real":[1]}]})"};
}

Sample structArray() {
    const char* names[] = {"x", "gr\u00F6\u00DFe", "\xED\xA0\x80"};
    qxArrayOwner array(qxCreateStructMatrix(1, 2, 3, names));
    qxSetCell(array.get(), 0, qxCreateDoubleScalar(1));
    qxSetCell(array.get(), 4, qxCreateString(""));
    return {"struct", std::move(array),
            R"({"class":2,"extents":[1,2],"fields":["x","größe",[237,160,128]],)"
            R"("slots":[{"class":6,"extents":[1,1],"real":[1]},null,null,null,)"
            R"({"class":4,"extents":[0,0],"real":[]},null]})"};
}

}  // namespace

std::vector<Sample> makeSamples() {
    Sample samples[] = {
        numeric<double>("double", qxDOUBLE_CLASS, {1, -2.5, 1e300}, "[1,-2.5,1e300]"),
        numeric<float>("single", qxSINGLE_CLASS, {0.5F, -8}, "[0.5,-8]"),
        numeric<std::uint8_t>("logical", qxLOGICAL_CLASS, {1, 0, 200}, "[1,0,1]"),
        numeric<char16_t>("char", qxCHAR_CLASS, {u'A', 0xD834, 0}, "[65,55348,0]"),
        numeric<std::int8_t>("int8", qxINT8_CLASS, {-128, 127}, "[-128,127]"),
        numeric<std::uint8_t>("uint8", qxUINT8_CLASS, {255, 3}, "[255,3]"),
        numeric<std::uint16_t>("uint16", qxUINT16_CLASS, {65535}, "[65535]"),
        numeric<std::int32_t>("int32", qxINT32_CLASS, {-2147483647, 7}, "[-2147483647,7]"),
        numeric<std::uint32_t>("uint32", qxUINT32_CLASS, {4294967295U}, "[4294967295]"),
        numeric<std::int64_t>("int64", qxINT64_CLASS, {-9223372036854775807}, "[-9223372036854775807]"),
        numeric<std::uint64_t>("uint64", qxUINT64_CLASS, {18446744073709551615ULL}, "[18446744073709551615]"),
        {"empty", qxArrayOwner(qxCreateDoubleMatrix(0, 70000, qxCOMPLEX)),
         R"({"class":6,"extents":[0,70000],"real":[],"imag":[]})"},
        {"unknown", qxArrayOwner(qxCreateNumericMatrix(0, 0, qxUNKNOWN_CLASS, qxREAL)),
         R"({"class":0,"extents":[0,0]})"},
        {"function", qxArrayOwner(qxCreateFunctionHandle("solve")),
         R"({"class":16,"extents":[1,1],"slots":[{"class":4,"extents":[1,5],"real":[115,111,108,118,101]}]})"},
        complexMatrix(),
        pages(),
        sparse("sparse", false),
        sparse("sparse-complex", true),
        sparseLogical(),
        nestedCell(),
        structArray(),
    };
    return {std::make_move_iterator(std::begin(samples)), std::make_move_iterator(std::end(samples))};
}
