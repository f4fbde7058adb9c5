#pragma once

#include "host/project/GeometrySurvey.h"

#include <cstdint>
#include <map>

namespace kinora::host {

/// The faces of a geometry file by their objects, as they are read.
class Surfaces {
public:
    using Number = std::uint32_t;

    /// Faces that come from now on are of this object.
    void SetObject(const std::string& name);
    void AddVertex(const scenario::Vector& place) { m_vertices.push_back(place); }
    std::size_t VertexCount() const { return m_vertices.size(); }
    /// @param corners  numbers of vertices
    void AddFace(const std::vector<Number>& corners);

    /// What the objects with faces amount to, in their order.
    std::vector<SurveyedObject> Survey() const;

private:
    struct Object {
        std::string name;
        std::vector<Number> corners;
        /// Where the corners of each face end.
        std::vector<std::size_t> ends;
    };

    std::vector<Number> Welded() const;
    SurveyedObject SurveyOf(const Object& object, const std::vector<Number>& welded) const;
    void MeasureFaces(const Object& object, SurveyedObject& survey) const;

    std::vector<scenario::Vector> m_vertices;
    std::vector<Object> m_objects;
    std::map<std::string, std::size_t> m_numbers;
    std::size_t m_current = 0;
};

} // namespace kinora::host
