#pragma once

#include "host/mechanism/DamperFlow.h"
#include "host/mechanism/ElementEffect.h"

#include <optional>
#include <utility>

namespace kinora::host {

/// All springs and bushings of a scenario, in one configuration of its bodies.
class Elements {
public:
    /// @param scenario  must outlive this object
    explicit Elements(const scenario::Scenario& scenario);

    /// Takes the present poses of the bodies and screws of the joints.
    /// @throws RunError  a spring has lost its direction, or a bushing is turned too far
    void Place(const std::vector<scenario::Pose>& poses, const std::vector<Screws>& screws);

    /// The elastic force on a joint.
    Generalised ForceOn(std::size_t joint) const;

    /// All dampers, of springs first; they belong to elements by `OwnerOf`.
    const std::vector<DamperRow>& Dampers() const { return m_dampers; }
    /// The element of a damper, counted over springs and then bushings.
    std::size_t OwnerOf(std::size_t damper) const { return m_owners[damper]; }
    std::size_t Count() const { return m_ends.size(); }

    /// What is told of each, but what it has dissipated.
    /// @param damperSpeeds  in the dampers' order
    std::pair<std::vector<SpringRecord>, std::vector<BushingRecord>>
    Records(const std::vector<double>& damperSpeeds) const;

private:
    struct Ends {
        const scenario::Attachment* from = nullptr;
        const scenario::Attachment* to = nullptr;
        scenario::Pose X_WF;
        scenario::Pose X_WG;
    };

    static scenario::Pose FrameOf(const scenario::Attachment& attachment, const std::vector<scenario::Pose>& poses);
    /// Joint and sign of each end that a joint moves.
    std::vector<std::pair<std::size_t, double>> JointsOf(const Ends& ends) const;
    DamperRow RowOf(std::size_t element, const Damper& damper) const;

    const scenario::Scenario& m_scenario;
    std::vector<std::optional<std::size_t>> m_jointOfBody;
    std::vector<Ends> m_ends;
    std::vector<ElementEffect> m_effects;
    std::vector<Screws> m_screws;
    std::vector<DamperRow> m_dampers;
    std::vector<std::size_t> m_owners;
};

} // namespace kinora::host
