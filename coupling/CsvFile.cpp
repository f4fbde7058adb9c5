#include "coupling/CsvFile.h"

#include "comutils/Text.h"

bool CCsvFile::Open(const std::string& path) {
    const std::wstring widePath = Text::ToWide(path);
    // One call opens and tells whether the file was there, which a stream would need a second look for.
    m_file = CreateFileW(widePath.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
    m_isNew = GetLastError() != ERROR_ALREADY_EXISTS;
    return IsOpen();
}

CCsvFile::~CCsvFile() {
    if (!IsOpen()) {
        return;
    }
    DWORD written = 0;
    // A full disk costs lines, not the run.
    (void)WriteFile(m_file, m_text.data(), static_cast<DWORD>(m_text.size()), &written, nullptr);
    CloseHandle(m_file);
}

CCsvFile& CCsvFile::operator<<(std::string_view text) {
    m_text += text;
    return *this;
}

CCsvFile& CCsvFile::operator<<(double number) {
    Text::AppendGeneral(m_text, number);
    return *this;
}

CCsvFile& CCsvFile::operator<<(const double (&numbers)[3]) {
    for (const double number : numbers) {
        *this << "," << number;
    }
    return *this;
}

void CCsvFile::EndLine() {
    m_text += "\r\n";
}
