#include "report/tool/Tool.h"
#include "scenario/Text.h"

#ifdef _WIN32
#include <windows.h>

int wmain(int count, wchar_t** values) {
    SetConsoleOutputCP(CP_UTF8);
#else
int main(int count, char** values) {
#endif
    std::vector<std::string> words;
    for (int i = 1; i < count; ++i) {
        words.push_back(kinora::scenario::Utf8FromPath(values[i]));
    }
    return static_cast<int>(kinora::report::RunTool(words));
}
