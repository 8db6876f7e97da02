#include "platform/wire/frame.h"

#include <gmock/gmock.h>

#include <functional>
#include <limits>

#include "platform/wire/messages.h"

namespace standin {
namespace {

using namespace std::string_literals;

std::string_view payload_of(std::string_view frame) { return frame.substr(kFrameHeader); }

std::string hex(std::string_view octets) { return to_text(Value::octets(std::string(octets))); }

const std::vector<Value>& values_of_every_type() {
  static const std::vector<Value> values = {
      Value(),
      Value::tag({0x7fffffff, 0xffffffff}),
      Value::text("t"),
      Value::buf(std::string(70000, 'x') + "\0y"s),
      Value::buf(""),
      Value::signed_number(Type::int8, -128),
      Value::signed_number(Type::int16, -32768),
      Value::int32(std::numeric_limits<std::int32_t>::min()),
      Value::signed_number(Type::int64, std::numeric_limits<std::int64_t>::min()),
      Value::signed_number(Type::int64, std::numeric_limits<std::int64_t>::max()),
      Value::unsigned_number(Type::uint8, 255),
      Value::unsigned_number(Type::uint16, 65535),
      Value::unsigned_number(Type::uint32, 4294967295u),
      Value::unsigned_number(Type::uint64, std::numeric_limits<std::uint64_t>::max()),
      Value::address("\1\2\3\0"s),
      Value::address(std::string(16, '\xfe')),
      Value::boolean(true),
      Value::boolean(false),
      Value::enumeration(-1),
      Value::list({}),
      Value::list({Value::buf("a"), Value::list({Value::int32(1)})}),
      Value::oid({}),
      Value::oid(Oid(128, 4294967295u)),
      Value::octets("\0\xff"s),
      Value::octets(""),
  };
  return values;
}

TEST(Frame, EveryKindOfElementComesBack) {
  const Level level = values_of_every_type();
  const Keypath kp = {{Value::tag({1, 2})}, {Value::buf("k"), Value::int32(3)}, {}};
  const Path path = {{PathStep::Kind::name, "snmp:snmp", {}, {}},
                     {PathStep::Kind::tag, {}, {4, 5}, {}},
                     {PathStep::Kind::keys, {}, {}, {Value::text("a b"), Value::oid({1})}}};
  FrameWriter out;
  out.put(std::uint64_t{1} << 63).put(std::int64_t{-5}).put(true).put("text").put_nil();
  out.put(level).put(kp).put(path).put(std::vector<std::string>{"a", ""});
  out.array(2).array(0).array(1).put(7u).put(std::string_view("\0"s));
  const std::string frame = out.take();

  FrameReader in(payload_of(frame));
  EXPECT_EQ(in.number(), std::uint64_t{1} << 63);
  EXPECT_EQ(in.signed_number(), -5);
  EXPECT_TRUE(in.boolean());
  EXPECT_FALSE(in.skip_nil());
  EXPECT_EQ(in.text(), "text");
  EXPECT_TRUE(in.skip_nil());
  EXPECT_EQ(in.level(), level);
  EXPECT_EQ(in.keypath(), kp);
  EXPECT_EQ(in.path(), path);
  EXPECT_EQ(in.texts(), (std::vector<std::string>{"a", ""}));
  EXPECT_EQ(in.array(), 2u);
  EXPECT_EQ(in.array(), 0u);
  EXPECT_EQ(in.array(), 1u);
  EXPECT_EQ(in.number(), 7u);
  EXPECT_FALSE(in.at_end());
  EXPECT_EQ(in.text(), "\0"s);
  EXPECT_TRUE(in.at_end());
  EXPECT_THROW(in.number(), WireError);
  EXPECT_THROW(in.skip_nil(), WireError);
}

TEST(Frame, MessageOfAnySizeHasItsCountAndLength) {
  for (const std::size_t count : {0u, 1u, 15u, 16u, 65535u, 65536u}) {
    FrameWriter out;
    for (std::size_t i = 0; i < count; ++i) out.put(i);
    const std::string frame = out.take();
    const std::size_t length = frame.size() - kFrameHeader;
    EXPECT_EQ(frame.substr(0, kFrameHeader),
              (std::string{static_cast<char>(length >> 24), static_cast<char>(length >> 16),
                           static_cast<char>(length >> 8), static_cast<char>(length)}));
    FrameReader in(payload_of(frame));
    for (std::size_t i = 0; i < count; ++i) ASSERT_EQ(in.number(), i);
    EXPECT_TRUE(in.at_end());
  }
}

TEST(Frame, WriterRefusesWhatNoReaderWouldTake) {
  FrameWriter unfinished;
  unfinished.array(2).put(1u);
  EXPECT_THROW(unfinished.take(), std::logic_error);

  FrameWriter large;
  const std::string half(kMaxFrame / 2, 'x');
  large.put(half).put(half);
  EXPECT_THROW(large.take(), WireError);

  FrameWriter deep;
  EXPECT_THROW(for (std::size_t i = 0; i < kMaxDepth; ++i) deep.array(1), WireError);
  Value nested = Value::list({});
  for (std::size_t i = 2; i < kMaxDepth - 1; ++i) nested = Value::list({nested});
  const std::string deepest = FrameWriter().put(nested).take();
  EXPECT_EQ(FrameReader(payload_of(deepest)).value(), nested);
  for (int i = 0; i < 3; ++i) nested = Value::list({nested});
  EXPECT_THROW(FrameWriter().put(nested), WireError);
  EXPECT_THROW(pack_value(nested), WireError);
}

// The worked example of docs/wire-protocol.md.
TEST(Frame, WorkedExampleHasTheDocumentedOctets) {
  FrameWriter out;
  out.put(static_cast<std::uint32_t>(Op::get_elem)).put(5u);
  out.put(parse_path("/snmp:snmp/community{public}/name"));
  EXPECT_EQ(hex(out.take()),
            "00:00:00:2e:"
            "93:3f:05:94:"
            "92:00:a9:73:6e:6d:70:3a:73:6e:6d:70:"
            "92:00:a9:63:6f:6d:6d:75:6e:69:74:79:"
            "92:02:92:05:a6:70:75:62:6c:69:63:"
            "92:00:a4:6e:61:6d:65");
  out.put(0u).put(2u).put(Value::buf("public"));
  EXPECT_EQ(hex(out.take()), "00:00:00:0c:93:00:02:92:06:a6:70:75:62:6c:69:63");
  out.put(static_cast<std::int32_t>(ErrorCode::noexists)).put("");
  EXPECT_EQ(hex(out.take()), "00:00:00:03:92:01:a0");
}

TEST(StoredValue, EveryTypeComesBack) {
  for (const Value& value : values_of_every_type()) {
    EXPECT_EQ(unpack_value(pack_value(value)), value) << to_text(value);
  }
}

TEST(MalformedFrame, CutAnywhereIsRefused) {
  FrameWriter out;
  out.put(70000u)
      .put(-70000)
      .put("text")
      .put(Value::octets("\1\2"))
      .put(Level{Value::oid({1, 300})});
  out.put(parse_path("/a/b{c}")).put(Value::list({Value::boolean(true)}));
  const std::string frame = out.take();
  const std::string_view whole = payload_of(frame);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_THROW(FrameReader(whole.substr(0, size)), WireError) << size;
  }
  EXPECT_THROW(FrameReader(std::string(whole) + '\0'), WireError);
}

TEST(MalformedFrame, NotAMessageIsRefused) {
  const std::pair<const char*, std::string> cases[] = {
      {"a number", "\x05"},
      {"a map", "\x80"},
      {"a map in the array", "\x91\x81\x01\x02"},
      {"a float", "\x91\xca\0\0\0\0"s},
      {"a double", "\x91\xcb\0\0\0\0\0\0\0\0"s},
      {"an extension", "\x91\xd4\x01\x02"},
      {"an octet that msgpack never uses", "\x91\xc1"},
      {"four billion elements", "\xdd\xff\xff\xff\xff\x01"},
      {"four billion octets of text", "\x91\xdb\xff\xff\xff\xff\x01"},
      {"four billion octets", "\x91\xc6\xff\xff\xff\xff\x01"},
      {"nesting without end", std::string(100000, '\x91')},
      {"more elements than any message has",
       "\xdd\x00\x80\x00\x01"s + std::string((8u << 20) + 1, '\0')},
      {"nesting one too deep", std::string(kMaxDepth, '\x91') + "\x90"},
  };
  for (const auto& [what, payload] : cases) EXPECT_THROW(FrameReader{payload}, WireError) << what;
}

TEST(MalformedFrame, ElementOfAnotherKindIsRefused) {
  const std::pair<const char*, std::function<void(FrameReader&)>> gets[] = {
      {"number", [](FrameReader& in) { in.number(); }},
      {"signed", [](FrameReader& in) { in.signed_number(); }},
      {"boolean", [](FrameReader& in) { in.boolean(); }},
      {"text", [](FrameReader& in) { in.text(); }},
      {"value", [](FrameReader& in) { in.value(); }},
      {"level", [](FrameReader& in) { in.level(); }},
      {"keypath", [](FrameReader& in) { in.keypath(); }},
      {"path", [](FrameReader& in) { in.path(); }},
      {"texts", [](FrameReader& in) { in.texts(); }},
      {"array", [](FrameReader& in) { in.array(); }},
  };
  // Each payload, and the gets that take it.
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      {"\x91\xc0", {}},                    // nil
      {"\x91\xc3", {"boolean"}},           // true
      {"\x91\x05", {"number", "signed"}},  // 5
      {"\x91\xff", {"signed"}},            // -1
      {"\x91\xcf\xff\xff\xff\xff\xff\xff\xff\xff", {"number"}},
      {"\x91\xa1x", {"text"}},
      {"\x91\xc4\x01x", {}},  // octets stand only in values
      {"\x91\x91\x01", {"value", "array"}},
      {"\x91\x91\xa1x", {"texts", "array"}},
      {"\x91\x91\x91\x01", {"level", "array"}},
      {"\x91\x91\x91\x91\x01", {"keypath", "array"}},
      {"\x91\x91\x92\x00\xa1x"s, {"path", "array"}},
      {"\x91\x91\x91\x02", {"path", "array"}},  // a value without content is no level here
  };
  for (const auto& [payload, takers] : cases) {
    for (const auto& [name, get] : gets) {
      FrameReader in(payload);
      if (std::find(takers.begin(), takers.end(), name) != takers.end()) {
        EXPECT_NO_THROW(get(in)) << name << " of " << hex(payload);
      } else {
        EXPECT_THROW(get(in), WireError) << name << " of " << hex(payload);
      }
    }
  }
}

TEST(MalformedValue, ContentOutsideItsTypeIsRefused) {
  const std::pair<const char*, std::string> cases[] = {
      {"no type", "\x90"},
      {"type 0", "\x92\x00\x01"s},
      {"type of no value", "\x92\x03\x01"},
      {"type past an octet", "\x92\xcd\x01\x06\xa0"},
      {"content of noexists", "\x92\x01\x01"},
      {"string without content", "\x91\x06"},
      {"string of two", "\x93\x06\xa0\xa0"},
      {"string in binary", "\x92\x06\xc4\x00"s},
      {"binary in text", "\x92\x27\xa0"},
      {"int8 of 128", "\x92\x07\xcc\x80"},
      {"int8 of -129", "\x92\x07\xd1\xff\x7f"},
      {"int32 past 31 bits", "\x92\x09\xce\x80\x00\x00\x00"s},
      {"enumeration past 31 bits", "\x92\x1d\xce\x80\x00\x00\x00"s},
      {"int64 past 63 bits", "\x92\x0a\xcf\x80\0\0\0\0\0\0\0"s},
      {"uint8 of 256", "\x92\x0b\xcd\x01\x00"s},
      {"uint16 of -1", "\x92\x0c\xff"},
      {"uint32 past 32 bits", "\x92\x0d\xcf\0\0\0\1\0\0\0\0"s},
      {"IPv4 of 3 octets", "\x92\x10\xc4\x03\1\2\3"},
      {"IPv4 of 16 octets", "\x92\x10\xc4\x10" + std::string(16, 'x')},
      {"IPv6 of 4 octets", "\x92\x11\xc4\x04\1\2\3\4"},
      {"boolean of 1", "\x92\x12\x01"},
      {"tag without namespace", "\x92\x02\x01"},
      {"tag past 32 bits", "\x93\x02\xcf\0\0\0\1\0\0\0\0\x01"s},
      {"OID of -1", "\x92\x26\xff"},
      {"OID of 129 numbers", "\xdc\x00\x82\x26"s + std::string(129, '\x01')},
      {"list of a number", "\x92\x1f\x05"},
      {"two values", "\x91\x01\x91\x01"},
  };
  for (const auto& [what, octets] : cases) EXPECT_THROW(unpack_value(octets), WireError) << what;
}

TEST(MalformedPath, StepOfNoKindIsRefused) {
  for (const std::string& step : {"\x90"s, "\x91\x00"s, "\x92\x01\x01"s, "\x92\x03\xa1x"s,
                                  "\x93\x00\xa1x\xa1y"s, "\x92\x02\x05"s, "\x92\xff\xa1x"s}) {
    FrameReader in("\x91\x91" + step);
    EXPECT_THROW(in.path(), WireError) << hex(step);
  }
}

}  // namespace
}  // namespace standin
