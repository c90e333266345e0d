#pragma once

#include <jni.h>

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>

/// Measured cases: an operation of the library beside what it is compared with.
namespace nativevrl::bench {

struct Case {
    std::string name;
    /// How many elements one run moves: what the time is divided by.
    std::size_t elements;
    std::function<void()> ours;
    /// The JNI calls that the operation can't do without, with a bare copy in between.
    std::function<void()> floor;
    /// A plain copy of the same bytes; empty where there is no sense in it.
    std::function<void()> copy = {};
    /// The calls of the floor, with bare loops that turn the rows by way of a tile; empty where the rows of both lie
    /// alike.
    std::function<void()> tiled = {};
    /// The calls of the floor, with each element moved by itself between its row and its place in the array; empty
    /// where the rows of both lie alike.
    std::function<void()> straight = {};
};

/// Adds a case; it runs as the benchmarks NAME/ours, NAME/floor, NAME/copy, NAME/tiled
/// and NAME/straight.
void addCase(Case one);

/// Adds the cases of a file once the virtual machine is there: `const CaseFile file(addMyCases);` at its end.
class CaseFile {
public:
    explicit CaseFile(void (*add)(JNIEnv* env));
};

/// Lets each file add its cases.
void addAllCases(JNIEnv* env);

/// Notes one measured time, in nanoseconds, of a benchmark.
void noteTime(const std::string& benchmark, double nanoseconds);

/// Prints each case by the medians of what was noted: time in all and per element, and the times of the others
/// divided by ours.
void printRatios(std::ostream& out);

}  // namespace nativevrl::bench
