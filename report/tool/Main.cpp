#include "programs/Main.h"

#include "report/tool/Tool.h"

#ifdef _WIN32
int wmain(int count, wchar_t** values) {
#else
int main(int count, char** values) {
#endif
    return kinora::programs::RunMain(count, values, "the report", kinora::report::RunTool);
}
