// What the compiler's runtime would bring along for its error messages is more than the rest of the library:
// its handler for what nobody catches prints names, and its standard exceptions own their texts, for which it
// needs strings, locales and formatted output. Here is the same without them. All is defined that the library
// uses of either file of the runtime: with one function missing the runtime's own file is linked as well, and
// the linker refuses the names that are there twice. For the Windows target's DLL alone.

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

/// What the runtime calls for an exception that nobody catches.
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
