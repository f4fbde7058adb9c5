#include "trace/core/ObjectPath.h"

#include <array>
#include <cctype>

namespace kinora::trace {
namespace {

/// Methods whose objects have a better name than the method without its verb.
struct Rule {
    const char* method;
    const char* step;
    /// Which text argument names the object; -1 for none.
    int nameArgument;
};

constexpr std::array<Rule, 7> rules = {{{"GetActiveProject", "activeProject", -1},
                                        {"GetActiveDesign", "activeDesign", -1},
                                        {"InsertDesign", "design", 1},
                                        {"GetChildObject", "child", 0},
                                        {"GetDefinitionManager", "definitions", -1},
                                        {"OpenProject", "project", 0},
                                        {"NewProject", "newProject", -1}}};

std::string WithoutVerb(const std::string& method) {
    for (const char* verb : {"SetActive", "GetActive", "Get", "Set", "Insert", "Open", "Create", "Add"}) {
        const std::string text = verb;
        if (method.size() > text.size() && method.compare(0, text.size(), text) == 0) {
            return method.substr(text.size());
        }
    }
    return method;
}

std::string Decapitalised(std::string text) {
    if (!text.empty()) {
        text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    }
    return text;
}

/// A project file by its stem, anything else as it stands.
std::string ShortName(const std::string& method, const std::string& name) {
    if (method != "OpenProject") {
        return name;
    }
    const std::size_t slash = name.find_last_of("/\\");
    const std::string file = slash == std::string::npos ? name : name.substr(slash + 1);
    return file.substr(0, file.find_last_of('.'));
}

} // namespace

std::string ChildPath(const std::string& parent, const std::string& method, const std::vector<std::string>& texts) {
    if (method == "GetAppDesktop") {
        return "desktop";
    }
    if (method == "SetActiveEditor" && !texts.empty() && texts.front() == "3D Modeler") {
        return parent + ".editor";
    }
    Rule found = {nullptr, nullptr, 0};
    for (const Rule& rule : rules) {
        found = rule.method == method ? rule : found;
    }
    const std::string step = found.step != nullptr ? found.step : Decapitalised(WithoutVerb(method));
    const auto name = static_cast<std::size_t>(found.nameArgument);
    const bool isNamed = found.nameArgument >= 0 && name < texts.size();
    return parent + "." + step + (isNamed ? "(\"" + ShortName(method, texts[name]) + "\")" : "");
}

int PathDepth(const std::string& path) {
    int depth = 0;
    bool isQuoted = false;
    for (const char c : path) {
        isQuoted = c == '"' ? !isQuoted : isQuoted;
        depth += c == '.' && !isQuoted ? 1 : 0;
    }
    return depth;
}

std::string LastStep(const std::string& path) {
    std::string step;
    bool isQuoted = false;
    bool isArgument = false;
    for (const char c : path) {
        isQuoted = c == '"' ? !isQuoted : isQuoted;
        if (isQuoted) {
            continue;
        }
        if (c == '.') {
            step.clear();
            isArgument = false;
        } else if (c == '(' || c == '[' || c == '#') {
            isArgument = true;
        } else if (!isArgument) {
            step += c;
        }
    }
    return step;
}

} // namespace kinora::trace
