// What docs/examples.md shows of a scenario is read without a complaint.
#include "tests/scenario/ScenarioFixture.h"

#include <gmock/gmock.h>

namespace kinora::scenario {
namespace {

class DocumentedSnippets : public ScenarioFixture {
protected:
    /// The page's blocks of JSON that are a part of a scenario.
    static std::vector<std::string> Parts() {
        const std::string page = ReadFile(KINORA_SOURCE_DIR "/docs/examples.md");
        const std::regex block("```json\n([^`]*)```");
        std::vector<std::string> parts;
        for (std::sregex_iterator at(page.begin(), page.end(), block), end; at != end; ++at) {
            const std::string text = (*at)[1];
            if (text.find("\"project\"") == std::string::npos) {
                parts.push_back(text);
            }
        }
        return parts;
    }

    /// A scenario whose rotor hangs on a free joint, unless the part is another joint for it.
    static json Around(const std::string& part) {
        json document = With({{"name", "hook"}, {"type", "free"}, {"bodies", {"rotor"}}, {"free", json::object()}});
        document["bodies"][0]["inertia"] = {1e-5, 1e-5, 1e-5};
        document["materials"] = {{"magnet", {{"name", "magnet_1T"}}}};
        const bool isObject = part.front() == '{';
        const json value = json::parse(isObject ? part : "{" + part + "}");
        if (isObject) {
            document["joints"][0] = value;
        } else if (value.contains("rotation")) {
            document["bodies"][0].update(value);
        } else {
            document.update(value);
        }
        return document;
    }
};

TEST_F(DocumentedSnippets, AreRead) {
    EXPECT_EQ(Parts().size(), 8u);
    for (const std::string& part : Parts()) {
        const json document = Around(part);
        EXPECT_EQ(FindingsOf(document), "no error") << part;
        EXPECT_THAT(Read(document).warnings, testing::IsEmpty()) << part;
    }
}

} // namespace
} // namespace kinora::scenario
