#pragma once
// Whatever is in the flight picture tells a new AWACS client about itself: the players by slot,
// the simulators by airplane number, each as one NEWCLT payload.
#include <functional>
#include <string_view>

class PictureSource {
  public:
    using Announce = std::function<void(std::string_view payload)>;
    virtual ~PictureSource() = default;
    virtual void announceTo(const Announce& announce) const = 0;
};
