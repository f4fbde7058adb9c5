#include "coupling/CsvFile.h"

#include "comutils/Text.h"

#include <filesystem>

CCsvFile::CCsvFile(const std::string& path) {
    const std::filesystem::path file = Text::ToWide(path);
    m_isNew = !std::filesystem::exists(file);
    m_stream.open(file, std::ios::app);
}

CCsvFile& CCsvFile::operator<<(std::string_view text) {
    m_stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    return *this;
}

CCsvFile& CCsvFile::operator<<(double number) {
    return *this << Text::General(number);
}

CCsvFile& CCsvFile::operator<<(const double (&numbers)[3]) {
    for (const double number : numbers)
        *this << "," << number;
    return *this;
}

void CCsvFile::EndLine() {
    m_stream.put('\n');
    m_stream.flush();
}
