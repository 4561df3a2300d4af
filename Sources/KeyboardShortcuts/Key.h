// A physical key, by its virtual key code: the place it has on an ANSI keyboard, in the
// numbering of Platform/KeyCodes.h. The constants are conveniences, any code is a Key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace KeyboardShortcuts {

struct Key {
    std::int64_t rawValue = 0;

    constexpr explicit Key(std::int64_t code) : rawValue(code) { }

    friend constexpr bool operator==(const Key&, const Key&) = default;

    static const Key a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z;
    static const Key zero, one, two, three, four, five, six, seven, eight, nine;
    static const Key capsLock, shift, function, control, option, command, rightCommand, rightOption, rightControl, rightShift;
    static const Key return_, backslash, backtick, comma, equal, minus, period, quote, semicolon, slash, space, tab, leftBracket, rightBracket;
    static const Key pageUp, pageDown, home, end, upArrow, rightArrow, downArrow, leftArrow, escape, delete_, deleteForward, help;
    static const Key mute, volumeUp, volumeDown;
    static const Key f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19, f20;
    static const Key keypad0, keypad1, keypad2, keypad3, keypad4, keypad5, keypad6, keypad7, keypad8, keypad9;
    static const Key keypadClear, keypadDecimal, keypadDivide, keypadEnter, keypadEquals, keypadMinus, keypadMultiply, keypadPlus;
};

inline constexpr Key Key::a{0};
inline constexpr Key Key::b{11};
inline constexpr Key Key::c{8};
inline constexpr Key Key::d{2};
inline constexpr Key Key::e{14};
inline constexpr Key Key::f{3};
inline constexpr Key Key::g{5};
inline constexpr Key Key::h{4};
inline constexpr Key Key::i{34};
inline constexpr Key Key::j{38};
inline constexpr Key Key::k{40};
inline constexpr Key Key::l{37};
inline constexpr Key Key::m{46};
inline constexpr Key Key::n{45};
inline constexpr Key Key::o{31};
inline constexpr Key Key::p{35};
inline constexpr Key Key::q{12};
inline constexpr Key Key::r{15};
inline constexpr Key Key::s{1};
inline constexpr Key Key::t{17};
inline constexpr Key Key::u{32};
inline constexpr Key Key::v{9};
inline constexpr Key Key::w{13};
inline constexpr Key Key::x{7};
inline constexpr Key Key::y{16};
inline constexpr Key Key::z{6};

inline constexpr Key Key::zero{29};
inline constexpr Key Key::one{18};
inline constexpr Key Key::two{19};
inline constexpr Key Key::three{20};
inline constexpr Key Key::four{21};
inline constexpr Key Key::five{23};
inline constexpr Key Key::six{22};
inline constexpr Key Key::seven{26};
inline constexpr Key Key::eight{28};
inline constexpr Key Key::nine{25};

inline constexpr Key Key::capsLock{57};
inline constexpr Key Key::shift{56};
inline constexpr Key Key::function{63};
inline constexpr Key Key::control{59};
inline constexpr Key Key::option{58};
inline constexpr Key Key::command{55};
inline constexpr Key Key::rightCommand{54};
inline constexpr Key Key::rightOption{61};
inline constexpr Key Key::rightControl{62};
inline constexpr Key Key::rightShift{60};

inline constexpr Key Key::return_{36};
inline constexpr Key Key::backslash{42};
inline constexpr Key Key::backtick{50};
inline constexpr Key Key::comma{43};
inline constexpr Key Key::equal{24};
inline constexpr Key Key::minus{27};
inline constexpr Key Key::period{47};
inline constexpr Key Key::quote{39};
inline constexpr Key Key::semicolon{41};
inline constexpr Key Key::slash{44};
inline constexpr Key Key::space{49};
inline constexpr Key Key::tab{48};
inline constexpr Key Key::leftBracket{33};
inline constexpr Key Key::rightBracket{30};

inline constexpr Key Key::pageUp{116};
inline constexpr Key Key::pageDown{121};
inline constexpr Key Key::home{115};
inline constexpr Key Key::end{119};
inline constexpr Key Key::upArrow{126};
inline constexpr Key Key::rightArrow{124};
inline constexpr Key Key::downArrow{125};
inline constexpr Key Key::leftArrow{123};
inline constexpr Key Key::escape{53};
inline constexpr Key Key::delete_{51};
inline constexpr Key Key::deleteForward{117};
inline constexpr Key Key::help{114};

inline constexpr Key Key::mute{74};
inline constexpr Key Key::volumeUp{72};
inline constexpr Key Key::volumeDown{73};

inline constexpr Key Key::f1{122};
inline constexpr Key Key::f2{120};
inline constexpr Key Key::f3{99};
inline constexpr Key Key::f4{118};
inline constexpr Key Key::f5{96};
inline constexpr Key Key::f6{97};
inline constexpr Key Key::f7{98};
inline constexpr Key Key::f8{100};
inline constexpr Key Key::f9{101};
inline constexpr Key Key::f10{109};
inline constexpr Key Key::f11{103};
inline constexpr Key Key::f12{111};
inline constexpr Key Key::f13{105};
inline constexpr Key Key::f14{107};
inline constexpr Key Key::f15{113};
inline constexpr Key Key::f16{106};
inline constexpr Key Key::f17{64};
inline constexpr Key Key::f18{79};
inline constexpr Key Key::f19{80};
inline constexpr Key Key::f20{90};

inline constexpr Key Key::keypad0{82};
inline constexpr Key Key::keypad1{83};
inline constexpr Key Key::keypad2{84};
inline constexpr Key Key::keypad3{85};
inline constexpr Key Key::keypad4{86};
inline constexpr Key Key::keypad5{87};
inline constexpr Key Key::keypad6{88};
inline constexpr Key Key::keypad7{89};
inline constexpr Key Key::keypad8{91};
inline constexpr Key Key::keypad9{92};
inline constexpr Key Key::keypadClear{71};
inline constexpr Key Key::keypadDecimal{65};
inline constexpr Key Key::keypadDivide{75};
inline constexpr Key Key::keypadEnter{76};
inline constexpr Key Key::keypadEquals{81};
inline constexpr Key Key::keypadMinus{78};
inline constexpr Key Key::keypadMultiply{67};
inline constexpr Key Key::keypadPlus{69};

}  // namespace KeyboardShortcuts

template <> struct std::hash<KeyboardShortcuts::Key> {
    std::size_t operator()(const KeyboardShortcuts::Key& key) const noexcept { return std::hash<std::int64_t>()(key.rawValue); }
};
