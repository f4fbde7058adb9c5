#pragma once

#include <clocale>
#include <locale>
#include <sstream>
#include <string>

namespace fake {

/// A host that writes its numbers with decimal commas and thousands points, in C++ and (where the system has such a
/// locale) in C; as before at the end.
class CommaLocale {
public:
    CommaLocale() : m_cBefore(std::setlocale(LC_ALL, nullptr)), m_cppBefore() {
        std::locale::global(std::locale(m_cppBefore, new Commas));
        for (const char* const name : {"German_Germany.1252", "de-DE", "German", "de_DE"}) {
            if (!HasCComma()) {
                std::setlocale(LC_ALL, name);
            }
        }
    }
    ~CommaLocale() {
        std::locale::global(m_cppBefore);
        std::setlocale(LC_ALL, m_cBefore.c_str());
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

    bool HasCComma() const { return *std::localeconv()->decimal_point == ','; }
    bool HasCppComma() const {
        std::ostringstream stream;
        stream << 1000.5;
        return stream.str() == "1.000,5";
    }

private:
    struct Commas : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::string m_cBefore;
    std::locale m_cppBefore;
};

} // namespace fake
