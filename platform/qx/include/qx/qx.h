#pragma once

/// The array library: n-dimensional arrays of numbers, text, cells, structs and handles.
///
/// A `qxArray` is a small header (class, dimensions, flags, scope) over a reference-counted storage that
/// owns the data blocks, the index tables of a sparse array, the element pointers of a cell or struct
/// array and the field names. A shared data copy is a second header over the same storage: a change
/// through one is seen through the other, also when an edit replaces a block or a table.
///
/// Storage is column-major, indices are zero-based. Real and imaginary parts are separate blocks. A struct
/// array has one slot per field and element, the fields of one element next to one another. A sparse
/// array is stored by compressed columns: row indices, column starts (one more than there are columns),
/// and values, with a capacity that may exceed the stored count. Text that goes in or out is UTF-8, and
/// modified UTF-8 (a surrogate pair as two three-byte sequences) is read and kept as well.
///
/// Every array that a function here returns belongs to the caller, who ends it with qxDestroyArray, except
/// where it says "borrowed". Nothing here knows Java. Functions that make an array return null when it
/// can't be made, for lack of memory too. Nothing throws but where it says so; an array is not protected against
/// concurrent use.

#include <cstddef>
#include <cstdint>
#include <string>

enum qxClassID : int {
    qxUNKNOWN_CLASS = 0,
    qxCELL_CLASS = 1,
    qxSTRUCT_CLASS = 2,
    qxLOGICAL_CLASS = 3,
    qxCHAR_CLASS = 4,
    qxDOUBLE_CLASS = 6,
    qxSINGLE_CLASS = 7,
    qxINT8_CLASS = 8,
    qxUINT8_CLASS = 9,
    qxINT16_CLASS = 10,
    qxUINT16_CLASS = 11,
    qxINT32_CLASS = 12,
    qxUINT32_CLASS = 13,
    qxINT64_CLASS = 14,
    qxUINT64_CLASS = 15,
    qxFUNCTION_CLASS = 16,
    qxOPAQUE_CLASS = 17,
    qxOBJECT_CLASS = 18
};

enum qxComplexity : int { qxREAL = 0, qxCOMPLEX = 1 };

/// Who ends an array that nobody ended: nobody (free-standing), or the component call that made it.
enum qxVariableScope : int { qxFREE_SCOPE = 0, qxCALL_SCOPE = 1 };

/// What new memory holds: zeros, or anything, for whoever writes all of it at once.
enum class qxContents { zeros, unset };

constexpr std::uint32_t qxSPARSE_FLAG = 0x20;
constexpr std::uint32_t qxCOMPLEX_FLAG = 0x200;

/// The shared part of an array. Only the array library changes it directly; readers use the accessors of qxArray.
struct qxStorage {
    void* real = nullptr;                  ///< real block, or the table of element pointers (qxArray*[])
    void* imag = nullptr;                  ///< imaginary block; null in a real array
    std::uint32_t* rowIndex = nullptr;     ///< sparse: zero-based row of each stored element
    std::uint32_t* columnStart = nullptr;  ///< sparse: one entry more than there are columns
    std::uint32_t capacity = 0;            ///< sparse: how many stored elements there is room for
};

/// The header of an array. Made and ended by the functions below only.
class qxArray {
public:
    /// Raw class word. A value above 16 is not final: ask _get_class_id_non_trivial.
    std::uint32_t classWord() const noexcept { return classWord_; }
    std::uint32_t numberOfDimensions() const noexcept { return numberOfDimensions_; }
    std::uint32_t flags() const noexcept { return flags_; }
    bool isSparse() const noexcept { return (flags_ & qxSPARSE_FLAG) != 0; }
    bool hasComplexFlag() const noexcept { return (flags_ & qxCOMPLEX_FLAG) != 0; }

    /// The extents, numberOfDimensions() of them; borrowed, valid as long as the header.
    const std::uint32_t* get_dimensions() const noexcept { return dimensions_; }

    void* realData() const noexcept { return storage_->real; }
    void* imagData() const noexcept { return storage_->imag; }
    std::uint32_t* rowIndexTable() const noexcept { return storage_->rowIndex; }
    std::uint32_t* columnStartTable() const noexcept { return storage_->columnStart; }
    std::uint32_t capacity() const noexcept { return storage_->capacity; }

    /// The true class of an array whose class word is above 16.
    qxClassID _get_class_id_non_trivial() const noexcept;

    /// Number of fields; 0 for what is no struct array.
    std::uint32_t get_number_of_struct_fields() const noexcept;

    /// Name of a field by its zero-based number; null when there is none. Borrowed until the fields change.
    const char* get_struct_field_name_by_number(std::uint32_t number) const noexcept;

    qxArray(const qxArray&) = delete;
    qxArray& operator=(const qxArray&) = delete;

private:
    friend struct qxArrayAccess;  // the array library's own way in
    qxArray() = default;
    ~qxArray() = default;

    std::uint32_t classWord_ = 0;
    std::uint32_t numberOfDimensions_ = 0;
    std::uint32_t flags_ = 0;
    qxVariableScope scope_ = qxFREE_SCOPE;
    const std::uint32_t* dimensions_ = nullptr;
    qxStorage* storage_ = nullptr;
    qxArray** scopeLink_ = nullptr;  // what points at this array in its scope's list; null outside of any scope
    qxArray* scopeNext_ = nullptr;
    std::uint32_t inlineDimensions_[4] = {};
};

// ---- Making arrays. Null for more than 255 dimensions, an extent above 2^31-1, a dense array of more than 2^32-1
// elements, or more bytes than can be had. Numbers start at zero, cell and struct slots at null.

/// Dense numeric, logical or char array. Dimensions are kept as given, trailing ones too; no dimension at
/// all gives 0-by-0, one dimension n gives n-by-1. Logical and char arrays get no imaginary block; a complex
/// array has one also when it has no element. Class 0 is possible only without elements.
/// Null for a class without numeric storage.
qxArray* qxCreateNumericArray(std::uint32_t dimensionCount, const std::uint32_t* dimensions, qxClassID classId,
                              qxComplexity complexity);

/// The same with elements of any content, for a caller that writes every one of them.
qxArray* qxCreateUninitNumericArray(std::uint32_t dimensionCount, const std::uint32_t* dimensions, qxClassID classId,
                                    qxComplexity complexity);
qxArray* qxCreateNumericMatrix(std::uint32_t rows, std::uint32_t columns, qxClassID classId, qxComplexity complexity);
qxArray* qxCreateDoubleMatrix(std::uint32_t rows, std::uint32_t columns, qxComplexity complexity);
qxArray* qxCreateDoubleScalar(double value);
qxArray* qxCreateLogicalScalar(bool value);

/// 1-by-n char array of the UTF-16 units of a UTF-8 text; 0-by-0 for an empty one.
qxArray* qxCreateString(const char* text);
qxArray* qxCreateStringUtf16(const char16_t* units, std::size_t count);

qxArray* qxCreateCellArray(std::uint32_t dimensionCount, const std::uint32_t* dimensions);
qxArray* qxCreateCellMatrix(std::uint32_t rows, std::uint32_t columns);
/// Field names are not empty and not the same twice; otherwise the result is null. With elements and without fields the
/// array has no data: its real data pointer is null.
qxArray* qxCreateStructArray(std::uint32_t dimensionCount, const std::uint32_t* dimensions, std::uint32_t fieldCount,
                             const char** fieldNames);
qxArray* qxCreateStructMatrix(std::uint32_t rows, std::uint32_t columns, std::uint32_t fieldCount,
                              const char** fieldNames);

/// Sparse double matrix with room for `capacity` stored elements (at least 0) and none stored.
qxArray* qxCreateSparse(std::int64_t rows, std::int64_t columns, std::uint32_t capacity, qxComplexity complexity);
/// Sparse logical matrix likewise. Negative extents give null.
qxArray* qxCreateSparseLogicalMatrix(std::int64_t rows, std::int64_t columns, std::uint32_t capacity);

/// Function handle: class 16, 1-by-1, whose slot 0 holds the function's name as a char row.
qxArray* qxCreateFunctionHandle(const char* name);
/// Name of a function handle as UTF-8; empty for any other array. Throws std::bad_alloc.
std::string qxGetFunctionName(const qxArray* array);

/// Opaque value: class 17, 1-by-1, owning `payload`, which `destroy` ends with the last header over it.
/// `subclass` names its kind. On failure the payload stays the caller's.
qxArray* qxCreateOpaque(const char* subclass, void* payload, void (*destroy)(void*));
/// Kind of an opaque array; null for any other. Borrowed.
const char* qxGetSubclass(const qxArray* array);
/// Payload of an opaque array; null for any other. Borrowed.
void* qxGetOpaquePayload(const qxArray* array);

// ---- Copies

/// New header over the same storage; null on failure or for null.
qxArray* qxCreateSharedDataCopy(const qxArray* source);
/// Deep copy: cells, fields and index tables too. A payload of an opaque value is shared. Elements that share storage
/// with one another do so in the copy as well. Null for null.
qxArray* qxDuplicateArray(const qxArray* source);
/// Copy with the elements of another numeric, logical or char class. Integers saturate, fractions round to
/// nearest with halves away from zero, NaN gives 0 in an integer or logical; a sparse source stays sparse where the
/// target class is double or logical and becomes dense otherwise. An imaginary part is dropped where the class has
/// none. The same class gives a deep copy. Null when there is no such conversion.
qxArray* qxCreateConvertedCopy(const qxArray* source, qxClassID classId);
/// Sparse array with the non-zero elements of a dense double or logical matrix; a shared copy when it is
/// sparse already. Null for any other array.
qxArray* qxMustBeSparse(const qxArray* source);
/// Whether two headers lie over one storage.
bool qxSharesStorage(const qxArray* first, const qxArray* second);

// ---- Ending

/// Ends an array, and its storage with the last header over it: cells and fields included. Null is fine.
void qxDestroyArray(qxArray* array);
void qxSetArrayScope(qxArray* array, qxVariableScope scope);

/// While one lives on a thread, arrays made on that thread belong to it and die with it, unless
/// qxSetArrayScope takes them out or they were put into a cell or struct slot. Scopes nest.
class qxCallScope {
public:
    qxCallScope();
    ~qxCallScope();
    qxCallScope(const qxCallScope&) = delete;
    qxCallScope& operator=(const qxCallScope&) = delete;

private:
    friend struct qxArrayAccess;
    qxCallScope* outer_;
    qxArray* first_ = nullptr;
};

/// While one lives on a thread, arrays made on it are free-standing: the call is out in foreign code.
class qxCallScopeSuspension {
public:
    qxCallScopeSuspension();
    ~qxCallScopeSuspension();
    qxCallScopeSuspension(const qxCallScopeSuspension&) = delete;
    qxCallScopeSuspension& operator=(const qxCallScopeSuspension&) = delete;

private:
    qxCallScope* suspended_;
};

/// Headers alive in the process: for tests and the leak report.
std::size_t qxLiveArrayCount();

// ---- Queries; `array` is never null unless it says so

qxClassID qxGetClassID(const qxArray* array);
/// Name of a class in one lower-case word, as messages and displays show it: "double", "cell", "function"; "unknown"
/// for class 0 and for what is no class. Never null, valid for ever.
const char* qxGetClassName(qxClassID classId);
/// Product of the extents.
std::size_t qxGetNumberOfElements(const qxArray* array);
bool qxIsEmpty(const qxArray* array);
std::size_t qxGetM(const qxArray* array);
/// Product of the extents from the second on.
std::size_t qxGetN(const qxArray* array);
/// Bytes of one element of one part; the width of a pointer for cells and structs.
std::size_t qxGetElementSize(const qxArray* array);
bool qxIsSparse(const qxArray* array);
/// The complex flag is set and there is an imaginary block.
bool qxIsComplex(const qxArray* array);
/// A char array's units in storage order as UTF-8, lone surrogates replaced; empty for any other class. Throws
/// std::bad_alloc, since an empty text would be another one.
std::string qxGetString(const qxArray* array);

// ---- Cells and structs

/// Element of slot `index`, borrowed, or null.
qxArray* qxGetCell(const qxArray* array, std::size_t index);
/// Stores `value` (null is fine) in a cell or struct slot and takes it over. The old element is the caller's to end,
/// also before the call. A value that shares storage with `array`, or holds such a one at any depth, is stored as a
/// deep copy, so that no array holds itself; the slot is left empty when memory for that runs out. Where there is no
/// slot `index` the value is ended.
void qxSetCell(qxArray* array, std::size_t index, qxArray* value);
/// The same for a slot whose old element is whole and is to stay so when the new one can't be stored. The old one goes
/// to `replaced`, the caller's to end; a deep copy of the array, when there has to be one, has a copy of it. False when
/// memory for that runs out: the array is as before then, and the value is ended.
bool qxReplaceCell(qxArray* array, std::size_t index, qxArray* value, qxArray** replaced);
/// Adds a field at the end, null in every element. Returns its number, also of a field that exists; -1 on failure: no
/// struct array, no name or an empty one, no memory. Names that differ only in the kind of UTF-8 are the same.
int qxAddField(qxArray* array, const char* name);
/// Zero-based number of a field; -1 when there is none.
int qxGetFieldNumber(const qxArray* array, const char* name);
/// Value of a field of one element, borrowed, or null.
qxArray* qxGetField(const qxArray* array, std::size_t element, const char* name);

// ---- Replacing blocks and tables: the array takes the new one over and forgets the old, which the caller
// has freed or reallocated. All headers over the storage see it.

void qxSetData(qxArray* array, void* real);
/// Also sets or clears the complex flag of this header.
void qxSetImagData(qxArray* array, void* imag);
/// Leaves the complex flag of this header as it is: a real array may share storage with a complex one, whose imaginary
/// block an edit through the real one moves.
void qxMoveImagData(qxArray* array, void* imag);
void qxSetIr(qxArray* array, std::uint32_t* rowIndex);
void qxSetJc(qxArray* array, std::uint32_t* columnStart);
void qxSetNzmax(qxArray* array, std::uint32_t capacity);

/// The arrays' own memory: zeroed, or not; 64-byte aligned; a block also for zero bytes; null when exhausted.
void* qxMalloc(std::size_t bytes);
void* qxCalloc(std::size_t count, std::size_t size);
/// Moves a block to a new size, keeping what fits; null leaves the old block as it was. A null block is a new one. What
/// lies behind the old contents is not zeroed.
void* qxRealloc(void* block, std::size_t bytes);
void qxFree(void* block);

// ---- Constants and predicates

double qxGetEps();
double qxGetInf();
double qxGetNaN();
bool qxIsFinite(double value);
bool qxIsInf(double value);
bool qxIsNaN(double value);

// ---- Serialised form and display

/// The array as a new 1-by-n uint8 array of deterministic CBOR: equal arrays give equal bytes, and any NaN equals any
/// other. Null when the array can't be written (an opaque value, arrays nested more than 101 deep, the outermost
/// included and the name of a function handle not, sparse tables that don't fit together, a form of more than 2^31-1
/// bytes) or memory runs out.
qxArray* qxSerialize(const qxArray* array);
/// The array behind such bytes; null unless every byte is as qxSerialize would have written it. Only a NaN may have
/// other bits, which stay.
qxArray* qxDeserialize(const void* bytes, std::size_t count);

/// The array as the runtime displays it, lines ended by a line feed; modified UTF-8. Long output is cut, with a line
/// that says how much is left out. Empty when memory runs out.
std::string qxToText(const qxArray* array);
