#include "platform/ErrorText.h"

#include <algorithm>
#include <array>

namespace tarvo::platform {
namespace {

struct Text {
    std::uint32_t code;
    const char* text;
};

/// By Windows error number.
constexpr std::array<Text, 21> windowsErrors{{
    {0, "The operation completed successfully."},
    {1, "Incorrect function."},
    {2, "The system cannot find the file specified."},
    {3, "The system cannot find the path specified."},
    {5, "Access is denied."},
    {6, "The handle is invalid."},
    {8, "Not enough memory resources are available to process this command."},
    {14, "Not enough storage is available to complete this operation."},
    {32, "The process cannot access the file because it is being used by another process."},
    {50, "The request is not supported."},
    {87, "The parameter is incorrect."},
    {112, "There is not enough space on the disk."},
    {120, "This function is not supported on this system."},
    {122, "The data area passed to a system call is too small."},
    {126, "The specified module could not be found."},
    {127, "The specified procedure could not be found."},
    {170, "The requested resource is in use."},
    {234, "More data is available."},
    {259, "No more data is available."},
    {1018, "Illegal operation attempted on a registry key that has been marked for deletion."},
    {1804, "The specified datatype is invalid."},
}};

constexpr std::array<Text, 22> results{{
    {0x80004001, "Not implemented"},                                                // E_NOTIMPL
    {0x80004002, "No such interface supported"},                                    // E_NOINTERFACE
    {0x80004003, "Invalid pointer"},                                                // E_POINTER
    {0x80004004, "Operation aborted"},                                              // E_ABORT
    {0x80004005, "Unspecified error"},                                              // E_FAIL
    {0x8000FFFF, "Catastrophic failure"},                                           // E_UNEXPECTED
    {0x80020001, "Unknown interface."},                                             // DISP_E_UNKNOWNINTERFACE
    {0x80020003, "Member not found."},                                              // DISP_E_MEMBERNOTFOUND
    {0x80020004, "Parameter not found."},                                           // DISP_E_PARAMNOTFOUND
    {0x80020005, "Type mismatch."},                                                 // DISP_E_TYPEMISMATCH
    {0x80020006, "Unknown name."},                                                  // DISP_E_UNKNOWNNAME
    {0x80020008, "Bad variable type."},                                             // DISP_E_BADVARTYPE
    {0x80020009, "Exception occurred."},                                            // DISP_E_EXCEPTION
    {0x8002000A, "Out of present range."},                                          // DISP_E_OVERFLOW
    {0x8002000B, "Invalid index."},                                                 // DISP_E_BADINDEX
    {0x8002000E, "Invalid number of parameters."},                                  // DISP_E_BADPARAMCOUNT
    {0x80040110, "Class does not support aggregation (or class object is remote)"}, // CLASS_E_NOAGGREGATION
    {0x80040111, "ClassFactory cannot supply requested class"}, // CLASS_E_CLASSNOTAVAILABLE
    {0x80040154, "Class not registered"},                       // REGDB_E_CLASSNOTREG
    {0x80040155, "Interface not registered"},                   // REGDB_E_IIDNOTREG
    {0x800401F0, "CoInitialize has not been called."},          // CO_E_NOTINITIALIZED
    {0x80010106, "Cannot change thread mode after it is set."}, // RPC_E_CHANGED_MODE
}};

template<typename Table>
const char* find(const Table& table, std::uint32_t code) {
    const auto entry = std::ranges::find(table, code, &Text::code);
    return entry != table.end() ? entry->text : nullptr;
}

} // namespace

std::optional<std::string> systemErrorText(std::int32_t code) {
    const std::uint32_t bits = static_cast<std::uint32_t>(code);
    // Windows errors also come wrapped as results, E_OUTOFMEMORY and E_INVALIDARG for instance.
    const bool isWrapped = bits >> 16 == 0x8007;
    const bool isResult = bits > 0xFFFF && !isWrapped;
    const char* const text = isResult ? find(results, bits) : find(windowsErrors, bits & 0xFFFF);
    if (text == nullptr)
        return std::nullopt;
    return std::string(text) + "\r\n";
}

} // namespace tarvo::platform
