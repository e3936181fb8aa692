// The compiler's runtime would bring along more code for its error messages than the rest of the library has:
// its handler for uncaught exceptions prints names, and its standard exceptions own their texts, for which it
// needs strings, locales and formatted output. This file does the same without them, for the DLL of the
// Windows target only.
//
// It must define everything that the library uses of the three files of the runtime that it replaces. If one
// function is missing, the linker adds the runtime's own file as well, and refuses the names that are then
// defined twice.

#include <cstdlib>
#include <exception>
#include <functional>
#include <new>

namespace {

/// Stands for std::logic_error and its kin, which nobody here tells apart.
class CRuntimeError : public std::exception
{
public:
    explicit CRuntimeError(const char* szWhat) noexcept : m_szWhat(szWhat) {}
    const char* what() const noexcept override { return m_szWhat; }

private:
    const char* m_szWhat;
};

} // namespace

namespace __gnu_cxx {

/// The runtime calls this for an exception that nobody catches.
void __verbose_terminate_handler()
{
    std::abort();
}

} // namespace __gnu_cxx

namespace std {

void __throw_bad_alloc()
{
    throw bad_alloc();
}

void __throw_bad_array_new_length()
{
    throw bad_array_new_length();
}

void __throw_bad_function_call()
{
    throw CRuntimeError("an empty function was called");
}

void __throw_logic_error(const char* szWhat)
{
    throw CRuntimeError(szWhat);
}

void __throw_length_error(const char* szWhat)
{
    throw CRuntimeError(szWhat);
}

void __throw_out_of_range_fmt(const char* szFormat, ...)
{
    throw CRuntimeError(szFormat);
}

} // namespace std
