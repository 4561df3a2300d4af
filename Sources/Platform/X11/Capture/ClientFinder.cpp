#include "Platform/X11/Capture/ClientFinder.h"

#include <algorithm>

namespace Platform::X11 {

std::span<const ClientFinder::Client> ClientFinder::find(std::span<const xcb_window_t> frames)
{
    constexpr int mostLevels = 2;  // some put a wrapper between frame and client
    m_found.clear();
    std::vector<Client> candidates;
    for (const auto frame : frames)
        candidates.push_back({frame, frame});
    for (int level = 0; level < mostLevels && !candidates.empty(); ++level)
        lookInto(candidates);
    return m_found;
}

// Windows that went meanwhile have no children and no properties. Afterwards `parents` are
// the children that are still to be looked into.
void ClientFinder::lookInto(std::vector<Client>& parents)
{
    auto& c = m_server.connection();
    std::vector<xcb_query_tree_cookie_t> trees;
    trees.reserve(parents.size());
    for (const auto& parent : parents)
        trees.push_back(xcb_query_tree(c, parent.window));
    std::vector<Client> children;
    for (std::size_t i = 0; i < parents.size(); ++i) {
        const auto tree = adopt(xcb_query_tree_reply(c, trees[i], nullptr));
        for (int child = 0; tree && child < xcb_query_tree_children_length(tree.get()); ++child)
            children.push_back({parents[i].frame, xcb_query_tree_children(tree.get())[child]});
    }
    m_server.countRoundTrip();

    std::vector<xcb_get_property_cookie_t> states;
    states.reserve(children.size());
    for (const auto& child : children)
        states.push_back(xcb_get_property(c, 0, child.window, m_stateAtom, XCB_ATOM_ANY, 0, 0));
    for (std::size_t i = 0; i < children.size(); ++i) {
        const auto state = adopt(xcb_get_property_reply(c, states[i], nullptr));
        if (state && state->type != XCB_ATOM_NONE && !isFound(children[i].frame))
            m_found.push_back(children[i]);
    }
    m_server.countRoundTrip();
    std::erase_if(children, [this](const Client& child) { return isFound(child.frame); });
    parents = std::move(children);
}

bool ClientFinder::isFound(xcb_window_t frame) const
{
    return std::any_of(m_found.begin(), m_found.end(), [frame](const Client& client) { return client.frame == frame; });
}

}  // namespace Platform::X11
