// The binary interface, as capi/abi.txt has it: against the header's text, this compiler, and the library as a file.
#include "tests/capi/strangers/Abi.h"

#include "tests/capi/strangers/Facts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>

namespace {

std::string HeaderWithoutComments() {
    static const std::regex comment(R"(/\*(?:[^*]|\*(?!/))*\*/)");
    return std::regex_replace(InterfaceFile("kinora_veltrix.h"), comment, "");
}

/// The first groups of all matches, with a text before each.
Texts Matches(const std::string& text, const std::string& pattern, const std::string& before) {
    const std::regex expression(pattern);
    Texts texts;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match) {
        texts.push_back(before + (*match)[1].str());
    }
    return texts;
}

void Append(Texts& texts, const Texts& more) {
    texts.insert(texts.end(), more.begin(), more.end());
}

/// What the header declares, as facts without their numbers.
Texts Declared() {
    const std::string header = HeaderWithoutComments();
    Texts names = Matches(header, R"(#define (KV_(?!API )\w+) +\w)", "value ");
    Append(names, Matches(header, R"((KV_\w+) = )", "value "));
    Append(names, Matches(header, R"(typedef \w+ (kv_\w+);)", "size "));
    const std::regex record(R"(typedef struct (kv_\w+) \{([^}]*)\})");
    for (std::sregex_iterator match(header.begin(), header.end(), record), end; match != end; ++match) {
        const std::string name = (*match)[1].str();
        names.push_back("size " + name);
        Append(names, Matches((*match)[2].str(), R"((\w+)(?:\[\d+\])?;)", "offset " + name + " "));
    }
    Append(names, Matches(header, R"(KV_API kv_status (kv_\w+)\()", "function "));
    return names;
}

TEST(BinaryInterface, HasAFactForEverythingThatTheHeaderDeclares) {
    Texts written;
    for (const std::string& fact : Facts({"value", "size", "offset", "function"})) {
        written.push_back(std::regex_replace(fact, std::regex(" [0-9]+$"), ""));
    }
    EXPECT_THAT(written, testing::UnorderedElementsAreArray(Declared()))
        << "capi/abi.txt and capi/kinora_veltrix.h differ: add to capi/abi.txt what is new; nothing else may change";
}

TEST(BinaryInterface, IsTheSameForThisCompiler) {
    Texts actual;
    for (const kv_fact* fact = kv_facts; fact->name; ++fact) {
        actual.push_back(fact->name + (" " + std::to_string(fact->number)));
    }
    EXPECT_THAT(actual, testing::ElementsAreArray(Facts({"value", "size", "offset"})));
}

TEST(BinaryInterface, HasFunctionsThatTheLinkerFinds) {
    const auto* end = kv_functions;
    while (*end) {
        ++end;
    }
    EXPECT_EQ(static_cast<std::size_t>(end - kv_functions), FunctionNames().size());
}

TEST(BinaryInterface, IsAllThatTheLibraryExports) {
    EXPECT_THAT(ExportedNames(), testing::ElementsAreArray(FunctionNames()));
}

} // namespace
