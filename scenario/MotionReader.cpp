#include "scenario/MotionReader.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kinora::scenario {
namespace {

double ReadCoordinate(const Node& node, Coordinate::Kind kind) {
    return kind == Coordinate::Kind::Slide ? node.Length() : node.Number();
}

MotionTable ReadTable(const Node& node, Coordinate::Kind kind) {
    MotionTable table;
    for (const Node& row : node.Items()) {
        const double time = row.At(0).Number();
        if (!table.rows.empty()) {
            RequireAscending(row, time, table.rows.back().first);
        }
        table.rows.emplace_back(time, ReadCoordinate(row.At(1), kind));
    }
    return table;
}

Stops ReadStops(const Node& node) {
    Stops stops;
    stops.min = node.NumberOr("min", stops.min);
    stops.max = node.NumberOr("max", stops.max);
    stops.restitution = node.NumberOr("restitution", 0.0);
    if (stops.min >= stops.max) {
        node.Report(fmt::format("min ({}) must be less than max ({}).", stops.min, stops.max));
    }
    return stops;
}

/// @param start  the coordinate at time 0
Expression ReadLoad(const Node& node, double start) {
    const auto load = node.Formula(Expression::Variables::TimeAndCoordinate);
    if (!load) {
        return Expression();
    }
    // A start that is wrong has been told.
    if (!std::isnan(start) && !std::isfinite(load->Evaluate(0.0, start))) {
        node.Report(fmt::format("\"{}\" is not a finite number at 0 s with q = {}, where the joint starts.",
                                load->Formula(), start));
    }
    return *load;
}

} // namespace

const std::vector<std::string>& MotionReader::PrescribedKeys() {
    static const std::vector<std::string> keys = {"expression", "table"};
    return keys;
}

const std::vector<std::string>& MotionReader::FreeKeys() {
    static const std::vector<std::string> keys = {"start",   "speed",    "inertia", "spring",
                                                  "damping", "friction", "stops",   "load"};
    return keys;
}

PrescribedMotion MotionReader::ReadPrescribed(const Node& node, Coordinate::Kind kind) const {
    const std::string source = node.OnlyOneOf(PrescribedKeys());
    if (source.empty()) {
        return PrescribedMotion(Expression());
    }
    return source == "table" ? PrescribedMotion(ReadTable(node.At("table"), kind))
                             : ReadFormula(node.At("expression"), kind);
}

/// A formula that gives a coordinate at every step, as far as that can be looked at in no time.
PrescribedMotion MotionReader::ReadFormula(const Node& node, Coordinate::Kind kind) const {
    constexpr int mostSteps = 100000;
    const Expression formula = node.Formula(Expression::Variables::Time).value_or(Expression());
    for (int step = 0; step <= std::min(m_stepping.steps, mostSteps); ++step) {
        const double time = m_stepping.TimeOf(step);
        const double coordinate = formula.Evaluate(time);
        if (!std::isfinite(coordinate)) {
            node.Report(fmt::format("\"{}\" is not a finite number at {} s.", formula.Formula(), time));
            break;
        }
        if (kind == Coordinate::Kind::Slide && std::fabs(coordinate) > farthestMetres) {
            node.Report(fmt::format("at {} s, {}", time, TooFarText(coordinate)));
            break;
        }
    }
    return PrescribedMotion(formula);
}

FreeMotion MotionReader::ReadFree(const Node& node, Coordinate::Kind kind) {
    FreeMotion motion;
    motion.start = node.Has("start") ? ReadCoordinate(node.At("start"), kind) : 0.0;
    motion.speed = node.NumberOr("speed", 0.0);
    motion.addedInertia = node.NotNegativeOr("inertia", 0.0);
    if (node.Has("spring")) {
        motion.spring.stiffness = node.At("spring").NotNegativeOr("stiffness", 0.0);
        motion.spring.rest = node.At("spring").NumberOr("rest", 0.0);
    }
    motion.damping = node.NotNegativeOr("damping", 0.0);
    motion.friction = node.NotNegativeOr("friction", 0.0);
    if (node.Has("stops")) {
        motion.stops = ReadStops(node.At("stops"));
    }
    if (motion.start < motion.stops.min || motion.start > motion.stops.max) {
        node.At("stops").Report(fmt::format("the coordinate starts at {}, outside the stops.", motion.start));
    }
    if (node.Has("load")) {
        motion.load = ReadLoad(node.At("load"), motion.start);
    }
    return motion;
}

void RequireAscending(const Node& row, double time, double timeBefore) {
    if (time <= timeBefore) {
        row.Report(fmt::format("time {} s does not come after {} s; times must ascend.", time, timeBefore));
    }
}

} // namespace kinora::scenario
