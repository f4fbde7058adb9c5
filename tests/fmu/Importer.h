#pragma once

#include "fmu/fmi/Fmi2.h"
#include "fmu/fmi/Fmi3.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace importer {

/// A shared library; stays loaded until the object goes.
class Library {
public:
    /// @throws std::runtime_error  it cannot be loaded
    explicit Library(const std::filesystem::path& file);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    /// @throws std::runtime_error  it has no such function
    template <class Function>
    Function* Find(const char* name) const {
        return reinterpret_cast<Function*>(Address(name));
    }

private:
    void* Address(const char* name) const;

    void* m_handle;
};

/// An FMU as an importing tool has it: unpacked, its description read, its binary loaded.
class Fmu {
public:
    /// @param folder  where it is unpacked
    /// @throws std::runtime_error  it is none
    Fmu(const std::filesystem::path& archive, const std::filesystem::path& folder);

    int Version() const { return m_version; }
    const std::string& Token() const { return m_token; }
    /// With a separator at its end.
    std::string ResourcePath() const;
    std::string ResourceLocation() const;
    const std::filesystem::path& Folder() const { return m_folder; }
    const Library& Binary() const { return *m_binary; }
    /// By its name; of an element of a vector in FMI 2.0 with its index.
    /// @throws std::out_of_range  there is none
    std::uint32_t Reference(const std::string& name) const { return m_references.at(name); }

private:
    void Unpack(const std::filesystem::path& archive) const;
    void ReadDescription();

    std::filesystem::path m_folder;
    int m_version = 0;
    std::string m_token, m_identifier;
    std::map<std::string, std::uint32_t> m_references;
    std::unique_ptr<Library> m_binary;
};

/// What an instance has told.
struct Told {
    int status;
    std::string category;
    std::string text;
};

/// An instance of an FMU of either version, in the words that both have. Statuses are the standard's: 0 is good, 3 an
/// error.
class Instance {
public:
    virtual ~Instance() = default;
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    /// @param output  what the parameter outputFolder is set to, unless it is empty
    static std::unique_ptr<Instance> Of(const Fmu& fmu, const std::string& name, const std::filesystem::path& output);

    virtual bool Exists() const = 0;
    virtual int EnterInitialization(double startTime, double stopTime) = 0;
    virtual int ExitInitialization() = 0;
    virtual int DoStep(double time, double duration) = 0;
    virtual int Terminate() = 0;
    virtual int Reset() = 0;
    virtual void Free() = 0;
    /// Of a single number, or of a whole vector.
    virtual int SetNumbers(const std::string& name, const std::vector<double>& values) = 0;
    virtual int GetNumbers(const std::string& name, std::vector<double>& values) = 0;
    virtual int GetInteger(const std::string& name, int& value) = 0;
    virtual int SetText(const std::string& name, const std::string& text) = 0;

    /// Order and value of derivatives of an input, in FMI 2.0.
    virtual int SetDerivatives(const std::string& name, const std::vector<std::pair<int, double>>& derivatives);

    /// @throws std::runtime_error  there are none
    double Number(const std::string& name);
    std::vector<double> Vector(const std::string& name, std::size_t size);
    /// From instantiation to the end of initialization; the whole log when it fails.
    /// @throws std::runtime_error  it fails
    void Start(double startTime, double stopTime);

    const std::vector<Told>& Log() const { return m_log; }
    std::string LogText() const;
    void Tell(int status, const char* category, const char* text) { m_log.push_back({status, category, text}); }

protected:
    Instance() = default;

private:
    std::vector<Told> m_log;
};

} // namespace importer
