#include "Platform/X11/Capture/StackReader.h"

#include <xcb/xfixes.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace Platform::X11 {
namespace {

// Where wallpaper setters say which pixmap they made, in the order in which compositors
// look for it.
constexpr std::array<const char*, 2> wallpaperProperties = {"_XROOTPMAP_ID", "_XSETROOT_ID"};

constexpr const char* managerProperty = "_NET_SUPPORTING_WM_CHECK";

constexpr std::uint32_t stackEvents = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;

void setEventMask(xcb_connection_t* c, xcb_window_t window, std::uint32_t events)
{
    xcb_change_window_attributes(c, window, XCB_CW_EVENT_MASK, &events);
}

// Of a property of 32 bits; nothing where it is not set.
std::optional<std::uint32_t> valueOf(const Reply<xcb_get_property_reply_t>& property)
{
    if (!property || property->format != 32 || xcb_get_property_value_length(property.get()) != 4)
        return std::nullopt;
    return *static_cast<const std::uint32_t*>(xcb_get_property_value(property.get()));
}

}  // namespace

StackReader::StackReader(CaptureServer& server)
    : m_server(server), m_c(server.connection()), m_opacityAtom(server.connection().atom("_NET_WM_WINDOW_OPACITY")),
      m_compositorSelection(server.connection().compositorSelection()), m_model(identifiers()), m_clientFinder(server)
{
    select(stackEvents);
    prime();
}

StackReader::~StackReader()
{
    select(XCB_EVENT_MASK_NO_EVENT);
    for (const auto& window : m_model.windows()) {
        if (!window.isWatched)
            continue;
        setEventMask(m_c, window.id, XCB_EVENT_MASK_NO_EVENT);
        if (window.client != XCB_WINDOW_NONE)
            setEventMask(m_c, window.client, XCB_EVENT_MASK_NO_EVENT);
        if (m_server.hasShape())
            xcb_shape_select_input(m_c, window.id, 0);
    }
    xcb_flush(m_c);
    dropEvents();
}

StackModel::Identifiers StackReader::identifiers()
{
    auto& connection = m_server.connection();
    const auto* setup = xcb_get_setup(m_c);
    StackModel::Identifiers identifiers;
    identifiers.root = connection.root();
    identifiers.ownBase = setup->resource_id_base;
    identifiers.mask = setup->resource_id_mask;
    identifiers.shapeNotify =
        m_server.hasShape() ? static_cast<std::uint8_t>(connection.firstEvent(xcb_shape_id) + XCB_SHAPE_NOTIFY) : std::uint8_t{0};
    identifiers.opacity = m_opacityAtom;
    for (const auto* name : wallpaperProperties)
        identifiers.wallpapers.push_back(connection.atom(name));
    identifiers.wallpapers.push_back(connection.atom(managerProperty));  // asked for along with them
    return identifiers;
}

void StackReader::select(std::uint32_t rootEvents)
{
    const auto root = m_server.connection().root();
    setEventMask(m_c, root, rootEvents);
    if (!m_server.hasFixes())
        return;
    const std::uint32_t ownerEvents = rootEvents == XCB_EVENT_MASK_NO_EVENT ? 0U
                                                                            : XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
            XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE;
    xcb_xfixes_select_selection_input(m_c, root, m_compositorSelection, ownerEvents);
}

// Events that are already on their way tell of the time before the grab.
void StackReader::dropEvents()
{
    while (Event(xcb_poll_for_queued_event(m_c))) { }
}

void StackReader::prime()
{
    const auto root = m_server.connection().root();
    xcb_grab_server(m_c);
    const auto ownerCookie = xcb_get_selection_owner(m_c, m_compositorSelection);
    const auto rootCookie = xcb_get_geometry(m_c, root);
    const auto treeCookie = xcb_query_tree(m_c, root);
    const auto owner = adopt(xcb_get_selection_owner_reply(m_c, ownerCookie, nullptr));
    const auto geometry = adopt(xcb_get_geometry_reply(m_c, rootCookie, nullptr));
    const auto tree = adopt(xcb_query_tree_reply(m_c, treeCookie, nullptr));
    m_server.countRoundTrip();
    dropEvents();

    m_compositor = owner ? owner->owner : xcb_window_t{XCB_WINDOW_NONE};
    m_model.clear();
    if (geometry)
        m_model.setRootSize(geometry->width, geometry->height);
    const auto* children = tree ? xcb_query_tree_children(tree.get()) : nullptr;
    for (int i = 0; tree && i < xcb_query_tree_children_length(tree.get()); ++i)
        m_model.add(children[i]);
    for (auto& window : m_model.windows())
        ask(window);
    askWallpaper();
    xcb_ungrab_server(m_c);
    collectAnswers(true);
}

bool StackReader::handle(const xcb_generic_event_t& event)
{
    const auto fixesBase = m_server.connection().firstEvent(xcb_xfixes_id);
    if (m_server.hasFixes() && eventType(event) == fixesBase + XCB_XFIXES_SELECTION_NOTIFY) {
        const auto& selection = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
        if (selection.selection != m_compositorSelection)
            return false;
        m_compositor = selection.subtype == XCB_XFIXES_SELECTION_EVENT_SET_SELECTION_OWNER ? selection.owner : xcb_window_t{XCB_WINDOW_NONE};
        ++m_compositorChanges;
        m_model.countRootBackground();
        return true;
    }
    return m_model.handle(event);
}

bool StackReader::needsLearning() const
{
    const auto windows = m_model.windows();
    return !knowsWallpaper() || std::any_of(windows.begin(), windows.end(), [](const ToplevelWindow& window) { return window.needsLearning(); });
}

void StackReader::learn()
{
    for (auto& window : m_model.windows()) {
        if (window.needsLearning())
            ask(window);
    }
    if (!knowsWallpaper())
        askWallpaper();
    collectAnswers(false);
}

// Selected before the questions, so that no change falls between answer and event.
void StackReader::watch(ToplevelWindow& window)
{
    if (window.isWatched)
        return;
    setEventMask(m_c, window.id, XCB_EVENT_MASK_PROPERTY_CHANGE);
    if (m_server.hasShape())
        xcb_shape_select_input(m_c, window.id, 1);
    window.isWatched = true;
}

void StackReader::ask(ToplevelWindow& window)
{
    Question question{};
    question.window = window.id;
    question.asksAttributes = window.needsAttributes;
    if (question.asksAttributes) {
        question.attributes = xcb_get_window_attributes(m_c, window.id);
        question.geometry = xcb_get_geometry(m_c, window.id);
    }
    watch(window);
    if (m_server.hasShape()) {
        question.extents = xcb_shape_query_extents(m_c, window.id);
        question.shape = xcb_shape_get_rectangles(m_c, window.id, XCB_SHAPE_SK_BOUNDING);
    }
    question.opacity = askOpacity(window.id);
    question.client = window.client;
    if (question.client != XCB_WINDOW_NONE)
        question.clientOpacity = askOpacity(question.client);
    m_questions.push_back(question);
}

xcb_get_property_cookie_t StackReader::askOpacity(xcb_window_t window) const
{
    return xcb_get_property(m_c, 0, window, m_opacityAtom, XCB_ATOM_CARDINAL, 0, 1);
}

void StackReader::collectAnswers(bool isPriming)
{
    if (m_asksWallpaper) {
        takeWallpaper();
        takeManager();
    }
    m_frames.clear();
    for (const auto& question : m_questions) {
        if (question.asksAttributes)
            takeAttributes(question, isPriming);
        takeDetails(question);
    }
    m_server.countRoundTrip();
    m_questions.clear();
    if (!m_frames.empty())
        learnClients();
}

void StackReader::askWallpaper()
{
    const auto root = m_server.connection().root();
    for (std::size_t i = 0; i < wallpaperProperties.size(); ++i) {
        const auto atom = m_server.connection().atom(wallpaperProperties[i]);
        m_wallpaperQuestions[i] = xcb_get_property(m_c, 0, root, atom, XCB_ATOM_PIXMAP, 0, 1);
    }
    m_managerQuestion = xcb_get_property(m_c, 0, root, m_server.connection().atom(managerProperty), XCB_ATOM_WINDOW, 0, 1);
    m_asksWallpaper = true;
    m_wallpaperGeneration = m_model.rootBackground();
}

void StackReader::takeWallpaper()
{
    m_wallpaper = XCB_NONE;
    for (const auto question : m_wallpaperQuestions) {
        const auto pixmap = valueOf(adopt(xcb_get_property_reply(m_c, question, nullptr)));
        if (m_wallpaper == XCB_NONE)
            m_wallpaper = pixmap.value_or(XCB_NONE);
    }
    m_asksWallpaper = false;
}

// A compositor that manages the windows too knows the clients in its frames and shows
// them as they want; another one sees the frames alone, for which the window manager says
// what their clients want.
void StackReader::takeManager()
{
    const auto manager = valueOf(adopt(xcb_get_property_reply(m_c, m_managerQuestion, nullptr)));
    const auto clientBits = ~xcb_get_setup(m_c)->resource_id_mask;
    const bool manages = hasCompositor() && manager && (*manager & clientBits) == (m_compositor & clientBits);
    if (std::exchange(m_compositorManages, manages) != manages)
        m_model.doubtOpacity();
}

// A window without answers is gone; its event is on the way.
void StackReader::takeAttributes(const Question& question, bool isPriming)
{
    const auto attributes = adopt(xcb_get_window_attributes_reply(m_c, question.attributes, nullptr));
    const auto geometry = adopt(xcb_get_geometry_reply(m_c, question.geometry, nullptr));
    auto* window = m_model.find(question.window);
    if (!attributes || !geometry || window == nullptr)
        return;
    window->isInputOnly = attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY;
    window->visual = attributes->visual;
    window->depth = geometry->depth;
    window->needsAttributes = false;
    m_model.setGeometry(*window, {geometry->x, geometry->y, geometry->width, geometry->height}, geometry->border_width);
    if (isPriming)
        m_model.setMapped(*window, attributes->map_state != XCB_MAP_STATE_UNMAPPED);
}

void StackReader::takeDetails(const Question& question)
{
    auto* window = m_model.find(question.window);
    if (m_server.hasShape())
        takeShape(question, window);
    takeOpacity(question, window);
    if (window != nullptr)
        window->needsShape = false;
}

void StackReader::takeShape(const Question& question, ToplevelWindow* window) const
{
    const auto extents = adopt(xcb_shape_query_extents_reply(m_c, question.extents, nullptr));
    const auto shape = adopt(xcb_shape_get_rectangles_reply(m_c, question.shape, nullptr));
    if (window == nullptr || !extents || !shape)
        return;
    window->isShaped = extents->bounding_shaped != 0;
    window->shape.clear();
    const auto* rects = xcb_shape_get_rectangles_rectangles(shape.get());
    for (int i = 0; window->isShaped && i < xcb_shape_get_rectangles_rectangles_length(shape.get()); ++i)
        window->shape.push_back({rects[i].x, rects[i].y, rects[i].width, rects[i].height});
}

void StackReader::takeOpacity(const Question& question, ToplevelWindow* window)
{
    const auto own = valueOf(adopt(xcb_get_property_reply(m_c, question.opacity, nullptr)));
    const auto reply = question.client != XCB_WINDOW_NONE ? adopt(xcb_get_property_reply(m_c, question.clientOpacity, nullptr)) : nullptr;
    if (window == nullptr)
        return;
    if (!reply)
        window->client = XCB_WINDOW_NONE;
    const auto ofClient = m_compositorManages ? valueOf(reply) : std::nullopt;
    window->opacity = own.value_or(ofClient.value_or(fullOpacity));
    window->needsOpacity = false;
    if (own || !m_compositorManages || window->client != XCB_WINDOW_NONE)
        return;
    // What has no pixels now is asked when it has.
    if (window->hasPixels())
        m_frames.push_back(window->id);
    else
        window->needsOpacity = !window->isInputOnly;
}

// Told of changes before it is asked, as the frames are.
void StackReader::learnClients()
{
    const auto clients = m_clientFinder.find(m_frames);
    std::vector<xcb_get_property_cookie_t> questions;
    for (const auto& client : clients) {
        setEventMask(m_c, client.window, XCB_EVENT_MASK_PROPERTY_CHANGE);
        questions.push_back(askOpacity(client.window));
    }
    for (std::size_t i = 0; i < clients.size(); ++i) {
        const auto opacity = adopt(xcb_get_property_reply(m_c, questions[i], nullptr));
        if (auto* window = m_model.find(clients[i].frame)) {
            window->client = opacity ? clients[i].window : xcb_window_t{XCB_WINDOW_NONE};
            window->opacity = valueOf(opacity).value_or(fullOpacity);
        }
    }
    m_server.countRoundTrip();
}

}  // namespace Platform::X11
