#pragma once

#include <optional>
#include <vector>

namespace inkory
{

/// The places that a person has left, like a browser's history: back to them, and on again. A value.
template <class Place> class NavigationHistory
{
public:
    /// More are forgotten, the oldest first.
    static constexpr std::size_t mostPlaces = 100;

    bool canGoBack() const { return !m_back.empty(); }
    bool canGoForward() const { return !m_forward.empty(); }

    /// The place is left for one that was not come from: what was ahead is cut off.
    void leave(const Place &place)
    {
        m_forward.clear();
        push(m_back, place);
    }

    /// Leaves the place for the one before it; none where there is none.
    std::optional<Place> back(const Place &present) { return step(m_back, m_forward, present); }
    std::optional<Place> forward(const Place &present) { return step(m_forward, m_back, present); }

private:
    static void push(std::vector<Place> &places, const Place &place)
    {
        if (!places.empty() && places.back() == place)
            return;
        places.push_back(place);
        if (places.size() > mostPlaces)
            places.erase(places.begin());
    }

    static std::optional<Place> step(std::vector<Place> &from, std::vector<Place> &to, const Place &present)
    {
        if (from.empty())
            return {};
        push(to, present);
        const Place next = from.back();
        from.pop_back();
        return next;
    }

    std::vector<Place> m_back;
    std::vector<Place> m_forward;
};

} // namespace inkory
