// What a caller may do wrong: null pointers, sizes, handles, names, numbers. Nothing is done then, outputs stay as they
// are, and the error's text says what is wrong.

#include "tests/capi/HandleSession.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <ostream>

namespace capi {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// What the calls below give, before they gave anything.
struct Outputs {
    std::int32_t api = 77;
    const char* text = "kept";
    std::size_t count = 77;
    std::int32_t solver = 77;
    kv_load load = {sizeof(kv_load), {7.0, 7.0, 7.0}, {7.0, 7.0, 7.0}};

    bool AreKept() const {
        return api == 77 && std::string(text) == "kept" && count == 77 && solver == 77 && load.force[0] == 7.0 &&
               load.torque[2] == 7.0;
    }
};

/// A whole set of right arguments, of which a test spoils one.
struct Inputs {
    Inputs() = default;
    Inputs(const Inputs&) = delete;
    Inputs& operator=(const Inputs&) = delete;

    std::vector<const char*> objects{"Magnet", "Block"};
    IKinoraVeltrixInterface::Transform transform{
        "Rotor", {0.0, 0.0, 0.0}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}};
    kv_group group = GroupOf(transform, objects);
    kv_material material = MaterialOf("Magnet", "N45", {890000.0, 0.0, 0.0});
    kv_pose pose = PoseOf(transform);

    kv_status Init(kv_coupling* handle) const { return kv_init_magnetic_objects(handle, &group, 1, &material, 1); }
    kv_status Analyze(kv_coupling* handle, Outputs& outputs) const {
        return kv_analyze(handle, 0.0, &pose, 1, &outputs.load, &outputs.count, &outputs.solver);
    }
};

/// A handle with an open project, whose calls have not reached the desktop yet.
class Arguments : public testing::Test {
protected:
    Arguments() {
        EXPECT_EQ(m_session.Create(), KV_OK);
        m_session.Desktop().messages = {L"a message"};
        m_session.Desktop().world.ClearJournal();
    }

    void ExpectRefused(kv_status status, const std::string& reason) {
        EXPECT_EQ(status, KV_BAD_ARGUMENT);
        EXPECT_TRUE(m_outputs.AreKept());
        EXPECT_TRUE(m_session.Desktop().world.Entries().empty()) << m_session.Desktop().world.Journal();
        EXPECT_THAT(ErrorText(m_session.Handle()), HasSubstr(reason));
    }

    HandleSession m_session;
    Outputs m_outputs;
    Inputs m_inputs;
};

/// A call with one null pointer.
struct NullCase {
    const char* name;
    kv_status (*call)(kv_coupling* handle, Inputs& inputs, Outputs& outputs);
};

void PrintTo(const NullCase& nullCase, std::ostream* stream) {
    *stream << nullCase.name;
}

const NullCase nullCases[] = {
    {"VersionApi", [](kv_coupling*, Inputs&, Outputs& o) { return kv_version(nullptr, &o.text); }},
    {"VersionText", [](kv_coupling*, Inputs&, Outputs& o) { return kv_version(&o.api, nullptr); }},
    {"Build", [](kv_coupling*, Inputs&, Outputs&) { return kv_build(nullptr); }},
    {"New", [](kv_coupling*, Inputs&, Outputs&) { return kv_new(KV_API_VERSION, nullptr, nullptr); }},
    {"LaunchHandle", [](kv_coupling*, Inputs&, Outputs&) { return kv_launch(nullptr, "Simulator"); }},
    {"CreateHandle",
     [](kv_coupling*, Inputs&, Outputs&) { return kv_create_project(nullptr, "a.vtdk", "magnets.obj", "mm"); }},
    {"CreateProject",
     [](kv_coupling* h, Inputs&, Outputs&) { return kv_create_project(h, nullptr, "magnets.obj", "mm"); }},
    {"CreateGeometry", [](kv_coupling* h, Inputs&, Outputs&) { return kv_create_project(h, "a.vtdk", nullptr, "mm"); }},
    {"CreateUnits",
     [](kv_coupling* h, Inputs&, Outputs&) { return kv_create_project(h, "a.vtdk", "magnets.obj", nullptr); }},
    {"OpenHandle", [](kv_coupling*, Inputs&, Outputs&) { return kv_open_project(nullptr, "magnets.obj", nullptr); }},
    {"OpenProject", [](kv_coupling* h, Inputs&, Outputs&) { return kv_open_project(h, nullptr, "Design"); }},
    {"DesignsList", [](kv_coupling* h, Inputs&, Outputs&) { return kv_get_designs(h, "magnets.obj", nullptr); }},
    {"GeometryHandle", [](kv_coupling*, Inputs&, Outputs&) { return kv_init_geometry(nullptr, "magnets.obj", "mm"); }},
    {"GeometryFile", [](kv_coupling* h, Inputs&, Outputs&) { return kv_init_geometry(h, nullptr, "mm"); }},
    {"GeometryUnits", [](kv_coupling* h, Inputs&, Outputs&) { return kv_init_geometry(h, "magnets.obj", nullptr); }},
    {"InitHandle", [](kv_coupling*, Inputs& i, Outputs&) { return i.Init(nullptr); }},
    {"InitGroups",
     [](kv_coupling* h, Inputs& i, Outputs&) { return kv_init_magnetic_objects(h, nullptr, 1, &i.material, 1); }},
    {"InitMaterials",
     [](kv_coupling* h, Inputs& i, Outputs&) { return kv_init_magnetic_objects(h, &i.group, 1, nullptr, 1); }},
    {"InitBody",
     [](kv_coupling* h, Inputs& i, Outputs&) {
         i.group.body = nullptr;
         return i.Init(h);
     }},
    {"InitObjects",
     [](kv_coupling* h, Inputs& i, Outputs&) {
         i.group.objects = nullptr;
         return i.Init(h);
     }},
    {"InitObject",
     [](kv_coupling* h, Inputs& i, Outputs&) {
         i.objects[1] = nullptr;
         return i.Init(h);
     }},
    {"InitMaterialsObject",
     [](kv_coupling* h, Inputs& i, Outputs&) {
         i.material.object = nullptr;
         return i.Init(h);
     }},
    {"InitMaterialsName",
     [](kv_coupling* h, Inputs& i, Outputs&) {
         i.material.material = nullptr;
         return i.Init(h);
     }},
    {"AnalyzeHandle", [](kv_coupling*, Inputs& i, Outputs& o) { return i.Analyze(nullptr, o); }},
    {"AnalyzePoses",
     [](kv_coupling* h, Inputs&, Outputs& o) { return kv_analyze(h, 0.0, nullptr, 1, &o.load, &o.count, &o.solver); }},
    {"AnalyzeLoads", [](kv_coupling* h, Inputs& i,
                        Outputs& o) { return kv_analyze(h, 0.0, &i.pose, 1, nullptr, &o.count, &o.solver); }},
    {"AnalyzeCount",
     [](kv_coupling* h, Inputs& i, Outputs& o) { return kv_analyze(h, 0.0, &i.pose, 1, &o.load, nullptr, &o.solver); }},
    {"AnalyzeStatus",
     [](kv_coupling* h, Inputs& i, Outputs& o) { return kv_analyze(h, 0.0, &i.pose, 1, &o.load, &o.count, nullptr); }},
    {"AnalyzeBody",
     [](kv_coupling* h, Inputs& i, Outputs& o) {
         i.pose.body = nullptr;
         return i.Analyze(h, o);
     }},
    {"MessagesList", [](kv_coupling* h, Inputs&, Outputs&) { return kv_get_messages(h, 0, nullptr); }},
    {"Save", [](kv_coupling*, Inputs&, Outputs&) { return kv_save_project(nullptr); }},
    {"Close", [](kv_coupling*, Inputs&, Outputs&) { return kv_close_project(nullptr); }},
    {"Quit", [](kv_coupling*, Inputs&, Outputs&) { return kv_quit(nullptr); }},
    {"Release", [](kv_coupling*, Inputs&, Outputs&) { return kv_release(nullptr); }},
    {"CountList", [](kv_coupling*, Inputs&, Outputs& o) { return kv_texts_count(nullptr, &o.count); }},
    {"AtList", [](kv_coupling*, Inputs&, Outputs& o) { return kv_texts_at(nullptr, 0, &o.text); }},
    {"ErrorText", [](kv_coupling* h, Inputs&, Outputs&) { return kv_error_text(h, nullptr); }},
    {"CodeText", [](kv_coupling*, Inputs&, Outputs&) { return kv_code_text(KV_OK, nullptr); }},
    {"ScriptErrorText", [](kv_coupling*, Inputs&, Outputs&) { return kv_script_error_text(0x0202, nullptr); }},
};

class NullPointer : public Arguments, public testing::WithParamInterface<NullCase> {};

TEST_P(NullPointer, IsABadArgumentAndNothingIsDone) {
    EXPECT_EQ(GetParam().call(m_session.Handle(), m_inputs, m_outputs), KV_BAD_ARGUMENT);
    EXPECT_TRUE(m_outputs.AreKept());
    EXPECT_TRUE(m_session.Desktop().world.Entries().empty()) << m_session.Desktop().world.Journal();
}

INSTANTIATE_TEST_SUITE_P(All, NullPointer, testing::ValuesIn(nullCases),
                         [](const auto& nullCase) { return std::string(nullCase.param.name); });

TEST_F(Arguments, ListsAreNullAfterAFailure) {
    kv_texts* list = nullptr;
    const auto spoil = [&] { list = reinterpret_cast<kv_texts*>(&list); };
    spoil();
    EXPECT_EQ(kv_get_designs(nullptr, "magnets.obj", &list), KV_BAD_ARGUMENT);
    EXPECT_EQ(list, nullptr);
    spoil();
    EXPECT_EQ(kv_get_designs(m_session.Handle(), nullptr, &list), KV_BAD_ARGUMENT);
    EXPECT_EQ(list, nullptr);
    spoil();
    EXPECT_EQ(kv_get_messages(nullptr, 0, &list), KV_BAD_ARGUMENT);
    EXPECT_EQ(list, nullptr);
    auto* handle = reinterpret_cast<kv_coupling*>(&list);
    EXPECT_EQ(kv_new(KV_API_VERSION + 1, nullptr, &handle), KV_BAD_ARGUMENT);
    EXPECT_EQ(handle, nullptr);
}

TEST_F(Arguments, ThatMayBeNull) {
    EXPECT_EQ(kv_delete(nullptr), KV_OK);
    EXPECT_EQ(kv_texts_free(nullptr), KV_OK);
    EXPECT_EQ(kv_launch(m_session.Handle(), nullptr), KV_OK);
    EXPECT_EQ(kv_open_project(m_session.Handle(), "magnets.obj", nullptr), KV_OK);
    EXPECT_EQ(m_session.Create(), KV_OK);
    m_inputs.group.objects = nullptr;
    m_inputs.group.object_count = 0;
    EXPECT_EQ(kv_init_magnetic_objects(m_session.Handle(), &m_inputs.group, 1, nullptr, 0), KV_OK);
    EXPECT_EQ(m_session.Create(), KV_OK);
    EXPECT_EQ(kv_init_magnetic_objects(m_session.Handle(), nullptr, 0, nullptr, 0), KV_OK);
    EXPECT_EQ(kv_analyze(m_session.Handle(), 0.0, nullptr, 0, nullptr, &m_outputs.count, &m_outputs.solver), KV_OK);
    EXPECT_EQ(m_outputs.count, 0U);
    EXPECT_EQ(m_outputs.solver, 0);
}

TEST_F(Arguments, TextsBeyondAListsEndAreNone) {
    kv_texts* list = nullptr;
    ASSERT_EQ(kv_get_messages(m_session.Handle(), 0, &list), KV_OK);
    EXPECT_EQ(kv_texts_count(list, nullptr), KV_BAD_ARGUMENT);
    EXPECT_EQ(kv_texts_at(list, 0, nullptr), KV_BAD_ARGUMENT);
    EXPECT_EQ(kv_texts_at(list, 1, &m_outputs.text), KV_BAD_ARGUMENT);
    EXPECT_EQ(kv_texts_at(list, std::numeric_limits<std::size_t>::max(), &m_outputs.text), KV_BAD_ARGUMENT);
    EXPECT_TRUE(m_outputs.AreKept());
    EXPECT_EQ(TakeTexts(list), std::vector<std::string>{"a message"});
}

// --- Sizes of records ------------------------------------------------------------------------------------------------

/// A record as a later version has it: more fields behind those of today.
template <class Record>
struct Later {
    explicit Later(const Record& today) : record(today) { record.size = sizeof *this; }
    Record record;
    double more[3] = {std::nan(""), std::nan(""), std::nan("")};
};

const std::size_t wrongSizes[] = {0, 1, sizeof(void*), sizeof(kv_load) - 1};

TEST_F(Arguments, RecordsOfWrongSizesAreRefused) {
    for (const std::size_t size : wrongSizes) {
        SCOPED_TRACE(size);
        Inputs groups, materials, poses;
        groups.group.size = size;
        ExpectRefused(groups.Init(m_session.Handle()), "groups[0]");
        materials.material.size = size;
        ExpectRefused(materials.Init(m_session.Handle()), "materials[0]");
        poses.pose.size = size;
        ExpectRefused(poses.Analyze(m_session.Handle(), m_outputs), "poses[0]");
        m_outputs.load.size = size;
        ExpectRefused(m_inputs.Analyze(m_session.Handle(), m_outputs), "loads[0]");
        m_outputs.load.size = sizeof(kv_load);
    }
}

TEST_F(Arguments, OneSizeHoldsForAWholeArray) {
    kv_pose poses[] = {m_inputs.pose, m_inputs.pose};
    poses[1].body = "Stator";
    poses[1].size = sizeof(kv_pose) + 8;
    std::array<kv_load, 2> loads = {m_outputs.load, m_outputs.load};
    ExpectRefused(kv_analyze(m_session.Handle(), 0.0, poses, 2, loads.data(), &m_outputs.count, &m_outputs.solver),
                  "poses[1]");
    poses[1].size = sizeof(kv_pose);
    loads[1].size = 0;
    ExpectRefused(kv_analyze(m_session.Handle(), 0.0, poses, 2, loads.data(), &m_outputs.count, &m_outputs.solver),
                  "loads[1]");
    EXPECT_EQ(loads[0].force[0], 7.0);
}

TEST_F(Arguments, AbsurdSizesAreRefusedAndNotFollowed) {
    kv_pose poses[] = {m_inputs.pose, m_inputs.pose};
    poses[0].size = std::numeric_limits<std::size_t>::max() - 7;
    std::array<kv_load, 2> loads = {m_outputs.load, m_outputs.load};
    ExpectRefused(kv_analyze(m_session.Handle(), 0.0, poses, 2, loads.data(), &m_outputs.count, &m_outputs.solver),
                  "poses[0]");
}

TEST_F(Arguments, RecordsOfALaterVersionServe) {
    const HandleSession& run = m_session;
    std::vector<Later<kv_group>> groups(run.Groups().begin(), run.Groups().end());
    std::vector<Later<kv_material>> materials(run.Materials().begin(), run.Materials().end());
    std::vector<Later<kv_pose>> poses(run.Poses(0).begin(), run.Poses(0).end());
    std::vector<Later<kv_load>> loads(run.Loads().begin(), run.Loads().end());
    m_session.Desktop().loads = [](const std::wstring& name) {
        return name.find(L"Yoke") == std::wstring::npos ? 1.0 : 3.0;
    };
    EXPECT_EQ(kv_init_magnetic_objects(m_session.Handle(), &groups[0].record, groups.size(), &materials[0].record,
                                       materials.size()),
              KV_OK);
    EXPECT_EQ(kv_analyze(m_session.Handle(), 0.0, &poses[0].record, poses.size(), &loads[0].record, &m_outputs.count,
                         &m_outputs.solver),
              KV_OK);
    EXPECT_EQ(m_outputs.count, 3U);
    EXPECT_EQ(loads[1].record.force[0], 1.0);
    EXPECT_EQ(loads[2].record.force[2], 3.0);
    EXPECT_EQ(loads[2].record.torque[2], 0.003);
    EXPECT_TRUE(std::isnan(loads[2].more[0])) << "written behind the fields that are known";
    EXPECT_EQ(loads[2].record.size, sizeof(Later<kv_load>));
}

TEST(Options, HaveTheirSizeToo) {
    kv_coupling* handle = nullptr;
    kv_options options = {sizeof options, 0, 0};
    EXPECT_EQ(kv_new(KV_API_VERSION, &options, &handle), KV_OK);
    EXPECT_EQ(kv_delete(handle), KV_OK);
    const Later<kv_options> later(options);
    EXPECT_EQ(kv_new(KV_API_VERSION, &later.record, &handle), KV_OK);
    EXPECT_EQ(kv_delete(handle), KV_OK);
    for (const std::size_t size : {std::size_t{0}, sizeof options - 1}) {
        options.size = size;
        EXPECT_EQ(kv_new(KV_API_VERSION, &options, &handle), KV_BAD_ARGUMENT);
        EXPECT_EQ(handle, nullptr);
        EXPECT_THAT(ErrorText(nullptr), StartsWith("kv_new: "));
    }
    options = {sizeof options, 0, 1};
    EXPECT_EQ(kv_new(KV_API_VERSION, &options, &handle), KV_BAD_ARGUMENT) << "what is reserved is 0";
}

// --- Handles ---------------------------------------------------------------------------------------------------------

/// Every function that takes a handle.
std::vector<Call> CallsOf(kv_coupling* handle, Inputs& inputs, Outputs& outputs, kv_texts*& list) {
    return {
        {"kv_launch", [=] { return kv_launch(handle, nullptr); }},
        {"kv_create_project", [=] { return kv_create_project(handle, "a.vtdk", "magnets.obj", "mm"); }},
        {"kv_open_project", [=] { return kv_open_project(handle, "magnets.obj", nullptr); }},
        {"kv_get_designs", [=, &list] { return kv_get_designs(handle, "magnets.obj", &list); }},
        {"kv_init_geometry", [=] { return kv_init_geometry(handle, "magnets.obj", "mm"); }},
        {"kv_init_magnetic_objects", [=, &inputs] { return inputs.Init(handle); }},
        {"kv_analyze", [=, &inputs, &outputs] { return inputs.Analyze(handle, outputs); }},
        {"kv_get_messages", [=, &list] { return kv_get_messages(handle, 0, &list); }},
        {"kv_save_project", [=] { return kv_save_project(handle); }},
        {"kv_close_project", [=] { return kv_close_project(handle); }},
        {"kv_quit", [=] { return kv_quit(handle); }},
        {"kv_release", [=] { return kv_release(handle); }},
        {"kv_error_text", [=, &outputs] { return kv_error_text(handle, &outputs.text); }},
        {"kv_delete", [=] { return kv_delete(handle); }},
    };
}

void ExpectNoHandle(kv_coupling* handle) {
    Inputs inputs;
    Outputs outputs;
    kv_texts* list = nullptr;
    for (const Call& call : CallsOf(handle, inputs, outputs, list)) {
        EXPECT_EQ(call.run(), KV_BAD_ARGUMENT) << call.name;
        EXPECT_THAT(ErrorText(nullptr), StartsWith(call.name + ": the handle is none")) << call.name;
    }
    EXPECT_TRUE(outputs.AreKept());
    EXPECT_EQ(list, nullptr);
}

TEST(HandleThatIsNone, IsRefusedByEveryFunction) {
    double somewhere[100] = {};
    ExpectNoHandle(reinterpret_cast<kv_coupling*>(somewhere));
    ExpectNoHandle(reinterpret_cast<kv_coupling*>(std::numeric_limits<std::uintptr_t>::max()));
}

TEST_F(Arguments, ADeletedHandleIsRefusedByEveryFunction) {
    kv_coupling* const handle = m_session.Handle();
    m_session.DeleteHandle();
    m_session.Desktop().world.ClearJournal();
    ExpectNoHandle(handle);
    EXPECT_TRUE(m_session.Desktop().world.Entries().empty());
}

TEST_F(Arguments, AListOutlivesItsHandle) {
    kv_texts* list = nullptr;
    ASSERT_EQ(kv_get_messages(m_session.Handle(), 0, &list), KV_OK);
    m_session.DeleteHandle();
    EXPECT_EQ(TakeTexts(list), std::vector<std::string>{"a message"});
}

// --- Names -----------------------------------------------------------------------------------------------------------

TEST_F(Arguments, NamesOfBodiesAreLettersDigitsAndUnderscores) {
    for (const char* const name :
         {"", "1st", "_Rotor", "Rotor 1", "Rotor-1", "../Rotor", "Rotor.", "R\xC3\xB6tor", "\"", "R\n"}) {
        SCOPED_TRACE(name);
        Inputs inputs;
        inputs.group.body = name;
        ExpectRefused(inputs.Init(m_session.Handle()),
                      "kv_init_magnetic_objects: groups[0].body is \"" + std::string(name) + "\".\n");
        inputs.pose.body = name;
        ExpectRefused(inputs.Analyze(m_session.Handle(), m_outputs),
                      "kv_analyze: poses[0].body is \"" + std::string(name) + "\".\n");
    }
}

TEST_F(Arguments, NoTwoBodiesHaveOneName) {
    for (const char* const second : {"Rotor", "ROTOR", "rotor"}) {
        kv_group groups[] = {m_inputs.group, m_inputs.group};
        groups[1].body = second;
        groups[1].object_count = 0;
        ExpectRefused(kv_init_magnetic_objects(m_session.Handle(), groups, 2, nullptr, 0), "groups[1].body");
        kv_pose poses[] = {m_inputs.pose, m_inputs.pose};
        poses[1].body = second;
        kv_load loads[] = {m_outputs.load, m_outputs.load};
        ExpectRefused(kv_analyze(m_session.Handle(), 0.0, poses, 2, loads, &m_outputs.count, &m_outputs.solver),
                      "poses[1].body");
    }
}

TEST_F(Arguments, NoObjectBelongsToTwoBodiesOrTwice) {
    kv_group groups[] = {m_inputs.group, m_inputs.group};
    groups[1].body = "Stator";
    ExpectRefused(kv_init_magnetic_objects(m_session.Handle(), groups, 2, nullptr, 0), "\"Magnet\"");
    m_inputs.objects[1] = "Magnet";
    ExpectRefused(kv_init_magnetic_objects(m_session.Handle(), &m_inputs.group, 1, nullptr, 0), "\"Magnet\"");
}

TEST_F(Arguments, NoObjectHasTwoMaterials) {
    const kv_material materials[] = {m_inputs.material, m_inputs.material};
    ExpectRefused(kv_init_magnetic_objects(m_session.Handle(), &m_inputs.group, 1, materials, 2), "\"Magnet\"");
}

// --- Numbers ---------------------------------------------------------------------------------------------------------

TEST_F(Arguments, NumbersAreFinite) {
    for (const double wrong : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        for (int place = 0; place < 12; ++place) {
            Inputs inputs;
            (place < 3 ? inputs.group.position[place] : inputs.group.rotation[place - 3]) = wrong;
            ExpectRefused(inputs.Init(m_session.Handle()), "\"Rotor\"");
            (place < 3 ? inputs.pose.position[place] : inputs.pose.rotation[place - 3]) = wrong;
            ExpectRefused(inputs.Analyze(m_session.Handle(), m_outputs), "\"Rotor\"");
        }
        Inputs inputs;
        inputs.material.coercivity_direction[1] = wrong;
        ExpectRefused(inputs.Init(m_session.Handle()), "materials[0]");
        ExpectRefused(kv_analyze(m_session.Handle(), wrong, &m_inputs.pose, 1, &m_outputs.load, &m_outputs.count,
                                 &m_outputs.solver),
                      "time");
    }
}

TEST_F(Arguments, RotationsAreRotations) {
    const double wrongs[][9] = {
        {},                                                  // nothing
        {2.0, 0.0, 0.0, 0.0, 2.0, 0.0, 0.0, 0.0, 2.0},       // scaled
        {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, -1.0},      // left-handed
        {1.0, 0.0, 0.0, 0.1, 1.0, 0.0, 0.0, 0.0, 1.0},       // skew
        {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 1.0, 0.0},       // flat
        {0.999, 0.0, 0.0, 0.0, 0.999, 0.0, 0.0, 0.0, 0.999}, // rounded by hand
        {1e300, 0.0, 0.0, 0.0, 1e300, 0.0, 0.0, 0.0, 1e300}, // whose square is none
    };
    for (const auto& wrong : wrongs) {
        Inputs inputs;
        std::copy(std::begin(wrong), std::end(wrong), inputs.group.rotation);
        ExpectRefused(inputs.Init(m_session.Handle()), "\"Rotor\"");
        std::copy(std::begin(wrong), std::end(wrong), inputs.pose.rotation);
        ExpectRefused(inputs.Analyze(m_session.Handle(), m_outputs), "\"Rotor\"");
    }
}

TEST_F(Arguments, RotationsOfSinglePrecisionServe) {
    const double angle = 0.3;
    const auto cosine = static_cast<double>(static_cast<float>(std::cos(angle)));
    const auto sine = static_cast<double>(static_cast<float>(std::sin(angle)));
    const double rotation[9] = {cosine, sine, 0.0, -sine, cosine, 0.0, 0.0, 0.0, 1.0};
    std::copy(std::begin(rotation), std::end(rotation), m_inputs.group.rotation);
    EXPECT_EQ(m_inputs.Init(m_session.Handle()), KV_OK);
}

// --- Versions --------------------------------------------------------------------------------------------------------

TEST(Version, OfAnotherKindOfHeaderIsRefused) {
    for (const std::int32_t api : {KV_API_VERSION + 1, 1000, 0, -1}) {
        kv_coupling* handle = nullptr;
        EXPECT_EQ(kv_new(api, nullptr, &handle), KV_BAD_ARGUMENT) << api;
        EXPECT_THAT(ErrorText(nullptr), StartsWith("kv_new: "));
    }
}

TEST(Version, IsTheProducts) {
    std::int32_t api = 0;
    const char* version = nullptr;
    ASSERT_EQ(kv_version(&api, &version), KV_OK);
    EXPECT_EQ(api, KV_API_VERSION);
    const char* build = nullptr;
    ASSERT_EQ(kv_build(&build), KV_OK);
    EXPECT_THAT(build, HasSubstr(version));
}

} // namespace
} // namespace capi
