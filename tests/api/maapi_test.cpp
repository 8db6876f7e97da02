// Every MAAPI call against the real server, in a transaction that a northbound session opened.
#include <confd_cdb.h>
#include <confd_maapi.h>
#include <netinet/in.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "platform/wire/value.h"
#include "world.h"

namespace scenario {
namespace {

#define COMMUNITY "/SNMP_COMMUNITY_MIB:SNMP-COMMUNITY-MIB/snmpCommunityTable/snmpCommunityEntry"
#define PARAMS "/SNMP_TARGET_MIB:SNMP-TARGET-MIB/snmpTargetParamsTable/snmpTargetParamsEntry"
#define USERS "/SNMP_USER_BASED_SM_MIB:SNMP-USER-BASED-SM-MIB/usmUserTable/usmUserEntry"
#define GROUPS                                                                 \
  "/SNMP_VIEW_BASED_ACM_MIB:SNMP-VIEW-BASED-ACM-MIB/vacmSecurityToGroupTable/" \
  "vacmSecurityToGroupEntry"
#define FAMILY                                                                \
  "/SNMP_VIEW_BASED_ACM_MIB:SNMP-VIEW-BASED-ACM-MIB/vacmViewTreeFamilyTable/" \
  "vacmViewTreeFamilyEntry"
#define ENGINE "/confd_dyncfg:confdConfig/snmpAgent/snmpEngine"

confd_value_t buf(const char* text) {
  confd_value_t v;
  CONFD_SET_BUF(&v, const_cast<char*>(text), std::strlen(text));
  return v;
}
confd_value_t octets(const char* text, std::size_t size) {
  confd_value_t v;
  CONFD_SET_BINARY(&v, const_cast<char*>(text), size);
  return v;
}
confd_value_t int32(int n) {
  confd_value_t v;
  CONFD_SET_INT32(&v, n);
  return v;
}

std::string printed(const confd_value_t& v) {
  char text[300];
  confd_pp_value(text, sizeof text, &v);
  return text;
}

class Maapi : public World {
 protected:
  void SetUp() override {
    start_server();
    session_ = session();
    attach();
    load_schema();
  }
  ~Maapi() override { ::close(sock); }

  sockaddr_in server_address() const {
    sockaddr_in server{};
    server.sin_family = AF_INET;
    server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    server.sin_port = htons(static_cast<std::uint16_t>(std::stoi(port())));
    return server;
  }
  // A socket of the library's own, in the session's transaction.
  void attach() {
    const sockaddr_in server = server_address();
    sock = ::socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_EQ(maapi_connect(sock, reinterpret_cast<const sockaddr*>(&server), sizeof server),
              CONFD_OK)
        << confd_lasterr();
    confd_trans_ctx context{};
    context.thandle = th = session_->handle();
    ASSERT_EQ(maapi_attach(sock, 0, &context), CONFD_OK) << confd_lasterr();
  }
  void load_schema() {
    char* path = nullptr;
    ASSERT_EQ(maapi_get_schema_file_path(sock, &path), CONFD_OK) << confd_lasterr();
    ASSERT_EQ(confd_mmap_schemas(path), CONFD_OK) << confd_lasterr();
    std::free(path);
  }
  std::string get(const char* path) {
    confd_value_t v;
    if (maapi_get_elem(sock, th, &v, path) != CONFD_OK) {
      return confd_errno == CONFD_ERR_NOEXISTS ? "(none)" : confd_lasterr();
    }
    const std::string text = printed(v);
    confd_free_value(&v);
    return text;
  }
  std::vector<std::string> keys(const char* list) {
    std::vector<std::string> found;
    maapi_cursor cursor;
    EXPECT_EQ(maapi_init_cursor(sock, th, &cursor, list), CONFD_OK);
    for (;;) {
      EXPECT_EQ(maapi_get_next(&cursor), CONFD_OK);
      if (cursor.n == 0) break;
      std::string row;
      for (int i = 0; i < cursor.n; ++i) row += (i ? " " : "") + printed(cursor.keys[i]);
      found.push_back(row);
    }
    maapi_destroy_cursor(&cursor);
    return found;
  }

  std::unique_ptr<NorthboundSession> session_;
  int sock = -1;
  int th = 0;
};

TEST_F(Maapi, KeysOfEveryTypeNameTheirRows) {
  confd_snmp_oid oid = {{1, 3, 0, 4294967295U}, 4};
  confd_value_t subtree, view = buf("a \"%s\" {b} \\"), model = int32(2147483647);
  CONFD_SET_OID(&subtree, &oid);
  confd_value_t engine = octets("\x80\x00\x7e\xd9\x00", 5), user;
  CONFD_SET_STR(&user, "päule");
  EXPECT_EQ(maapi_create(sock, th, FAMILY "{%x %x}", &view, &subtree), CONFD_OK) << confd_lasterr();
  EXPECT_EQ(maapi_create(sock, th, USERS "{%x %x}/", &engine, &user), CONFD_OK) << confd_lasterr();
  EXPECT_EQ(maapi_create(sock, th, GROUPS "{%x %x}", &model, &view), CONFD_OK) << confd_lasterr();
  EXPECT_EQ(maapi_exists(sock, th, FAMILY "{%x %x}", &view, &subtree), 1);
  EXPECT_EQ(keys(FAMILY), (std::vector<std::string>{"a \"%s\" {b} \\ 1.3.0.4294967295"}));
  EXPECT_EQ(keys(USERS), (std::vector<std::string>{"80:00:7e:d9:00 päule"}));
  EXPECT_EQ(keys(GROUPS), (std::vector<std::string>{"2147483647 a \"%s\" {b} \\"}));
}

TEST_F(Maapi, CreateAndDeleteSayWhatStandsInTheWay) {
  const std::string too_long(33, 'x');
  confd_value_t key = buf("a"), other = buf("b"), long_key = buf(too_long.c_str());
  EXPECT_EQ(maapi_create(sock, th, COMMUNITY "{%x}", &key), CONFD_OK);
  EXPECT_EQ(maapi_create(sock, th, COMMUNITY "{%x}", &key), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_ALREADY_EXISTS) << confd_lasterr();
  EXPECT_EQ(maapi_create(sock, th, ENGINE), CONFD_ERR);  // its parent is absent
  EXPECT_EQ(confd_errno, CONFD_ERR_NOEXISTS) << confd_lasterr();
  EXPECT_EQ(maapi_delete(sock, th, COMMUNITY "{%x}", &other), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOEXISTS);
  EXPECT_EQ(maapi_delete(sock, th, COMMUNITY "{%x}/snmpCommunityIndex", &key), CONFD_ERR);
  EXPECT_EQ(maapi_delete(sock, th, COMMUNITY "{%x}/snmpCommunitySecurityName", &key), CONFD_OK);
  EXPECT_EQ(maapi_create(sock, th, COMMUNITY "{%x}", &long_key), CONFD_ERR);
  EXPECT_LT(maapi_exists(sock, th, "/SNMP_COMMUNITY_MIB:SNMP-COMMUNITY-MIB/nothing"), 0);
  EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
}

TEST_F(Maapi, DefaultsAbsentLeavesAndEmptyTextsAreThreeThings) {
  EXPECT_EQ(get(ENGINE "//snmpEngineID"), "(none)");
  EXPECT_EQ(maapi_exists(sock, th, ENGINE "/snmpEngineID"), 0);
  EXPECT_EQ(maapi_create(sock, th, "/confd_dyncfg:confdConfig/snmpAgent/"), CONFD_OK);
  EXPECT_EQ(maapi_create(sock, th, ENGINE), CONFD_OK);
  EXPECT_EQ(get(ENGINE "//snmpEngineID"), "80:00:7e:d9:05:00:00:00:00");
  EXPECT_EQ(maapi_exists(sock, th, ENGINE "/snmpEngineID"), 1);
  confd_value_t key = buf("c"), empty = buf("");
  EXPECT_EQ(maapi_create(sock, th, COMMUNITY "{%x}", &key), CONFD_OK);
  EXPECT_EQ(get(COMMUNITY "{c}/snmpCommunitySecurityName"), "(none)");
  EXPECT_EQ(maapi_set_elem(sock, th, &empty, COMMUNITY "{%x}/snmpCommunityName", &key), CONFD_OK);
  EXPECT_EQ(get(COMMUNITY "{c}/snmpCommunityName"), "");
}

TEST_F(Maapi, RefusedWriteNamesNodeValueAndReason) {
  confd_value_t key = buf("c"), level = int32(9), text = buf("x");
  ASSERT_EQ(maapi_create(sock, th, PARAMS "{%x}", &key), CONFD_OK);
  CONFD_SET_ENUM_VALUE(&level, 9);
  EXPECT_EQ(maapi_set_elem(sock, th, &level, PARAMS "{%x}/snmpTargetParamsSecurityLevel", &key),
            CONFD_ERR);
  EXPECT_NE(std::string(confd_lasterr()).find("snmpTargetParamsSecurityLevel"), std::string::npos)
      << confd_lasterr();
  EXPECT_EQ(maapi_set_elem(sock, th, &text, PARAMS "{%x}/snmpTargetParamsMPModel", &key),
            CONFD_ERR);
  EXPECT_EQ(maapi_set_elem(sock, th, &text, PARAMS "{nobody}/snmpTargetParamsSecurityName"),
            CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOEXISTS) << confd_lasterr();
  EXPECT_EQ(get(PARAMS "{c}/snmpTargetParamsSecurityLevel"), "(none)");
}

TEST_F(Maapi, ObjectsTravelInSchemaOrder) {
  confd_value_t key = buf("ConfD1"), copy = buf("ConfD2"), values[6];
  ASSERT_EQ(maapi_create(sock, th, PARAMS "{%x}", &key), CONFD_OK);
  ASSERT_EQ(maapi_create(sock, th, PARAMS "{%x}", &copy), CONFD_OK);
  EXPECT_EQ(maapi_get_object(sock, th, values, 6, PARAMS "{%x}", &key), 6) << confd_lasterr();
  EXPECT_EQ(printed(values[0]), "ConfD1");
  EXPECT_EQ(values[1].type, C_NOEXISTS);
  EXPECT_EQ(values[3].type, C_NOEXISTS);
  for (auto& v : values) confd_free_value(&v);
  values[0] = buf("ignored");
  values[1] = int32(3);
  CONFD_SET_NOEXISTS(&values[2]);
  values[3] = buf("alice");
  CONFD_SET_ENUM_VALUE(&values[4], 3);
  CONFD_SET_NOEXISTS(&values[5]);
  EXPECT_EQ(maapi_set_object(sock, th, values, 6, PARAMS "{%x}", &copy), CONFD_OK)
      << confd_lasterr();
  EXPECT_EQ(get(PARAMS "{ConfD2}/snmpTargetParamsName"), "ConfD2");
  EXPECT_EQ(get(PARAMS "{ConfD2}/snmpTargetParamsMPModel"), "3");
  EXPECT_EQ(get(PARAMS "{ConfD2}/snmpTargetParamsSecurityModel"), "(none)");
  EXPECT_EQ(get(PARAMS "{ConfD2}/snmpTargetParamsSecurityName"), "alice");
  CONFD_SET_ENUM_VALUE(&values[4], 9);
  values[1] = int32(2);
  EXPECT_EQ(maapi_set_object(sock, th, values, 6, PARAMS "{%x}", &copy), CONFD_ERR);
  EXPECT_EQ(get(PARAMS "{ConfD2}/snmpTargetParamsMPModel"), "3") << "all of it is undone";
  EXPECT_LT(maapi_get_object(sock, th, values, 6, PARAMS "{nobody}"), 0);
}

TEST_F(Maapi, MoveTakesEverythingAndChangesNothingWhenRefused) {
  confd_value_t a = octets("AAAAA", 5), b = octets("BBBBB", 5), name = buf("u");
  confd_value_t to_b[2] = {b, name};
  EXPECT_EQ(maapi_move(sock, th, to_b, 2, USERS "{%x %x}", &a, &name), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOEXISTS);
  ASSERT_EQ(maapi_create(sock, th, USERS "{%x %x}", &a, &name), CONFD_OK);
  ASSERT_EQ(
      maapi_set_elem2(sock, th, "maplesyrup", USERS "{%x %x}/usm-crypto/auth/password", &a, &name),
      CONFD_OK);
  confd_value_t note = buf("moved along"), before, after;
  ASSERT_EQ(maapi_set_attr(sock, th, CONFD_ATTR_ANNOTATION, &note, USERS "{%x %x}", &a, &name),
            CONFD_OK);
  ASSERT_EQ(maapi_get_elem(sock, th, &before, USERS "{%x %x}/usm-crypto/auth/password", &a, &name),
            CONFD_OK);
  EXPECT_EQ(maapi_move(sock, th, to_b, 2, USERS "{%x %x}", &a, &name), CONFD_OK) << confd_lasterr();
  EXPECT_EQ(keys(USERS), (std::vector<std::string>{"42:42:42:42:42 u"}));
  ASSERT_EQ(maapi_get_elem(sock, th, &after, USERS "{%x %x}/usm-crypto/auth/password", &b, &name),
            CONFD_OK);
  EXPECT_TRUE(confd_val_eq(&before, &after));
  confd_attr_value_t* found = nullptr;
  int count = 0;
  EXPECT_EQ(maapi_get_attrs(sock, th, nullptr, 0, &found, &count, USERS "{%x %x}", &b, &name),
            CONFD_OK);
  ASSERT_EQ(count, 1);
  EXPECT_EQ(printed(found[0].v), "moved along");
  confd_free_value(&found[0].v);
  std::free(found);
  ASSERT_EQ(maapi_create(sock, th, USERS "{%x %x}", &a, &name), CONFD_OK);
  EXPECT_EQ(maapi_move(sock, th, to_b, 2, USERS "{%x %x}", &a, &name), CONFD_ERR);
  EXPECT_EQ(keys(USERS).size(), 2U);
  EXPECT_EQ(printed(before).find("maple"), std::string::npos);
  confd_free_value(&before);
  confd_free_value(&after);
}

TEST_F(Maapi, CursorKeepsTheLastKeyNotAPosition) {
  for (const char* name : {"b", "d", "a", "e"}) {
    confd_value_t key = buf(name);
    ASSERT_EQ(maapi_create(sock, th, COMMUNITY "{%x}", &key), CONFD_OK);
  }
  std::string seen;
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock, th, &cursor, COMMUNITY), CONFD_OK);
  for (;;) {
    ASSERT_EQ(maapi_get_next(&cursor), CONFD_OK);
    if (cursor.n == 0) break;
    const std::string key = printed(cursor.keys[0]);
    seen += key;
    confd_value_t added = buf("c");
    if (key == "b") {
      EXPECT_EQ(maapi_create(sock, th, COMMUNITY "{%x}", &added), CONFD_OK);
      EXPECT_EQ(maapi_delete(sock, th, COMMUNITY "{d}"), CONFD_OK);
      EXPECT_EQ(maapi_delete(sock, th, COMMUNITY "{%x}", &cursor.keys[0]), CONFD_OK);
    }
  }
  maapi_destroy_cursor(&cursor);
  EXPECT_EQ(seen, "abce");
}

int collect(confd_hkeypath_t* kp, confd_value_t* v, void* state) {
  char path[400];
  confd_pp_kpath(path, sizeof path, kp);
  auto& found = *static_cast<std::vector<std::string>*>(state);
  found.push_back(std::string(path) + (v != nullptr ? "=" + printed(*v) : ""));
  return found.size() == 3 ? ITER_STOP : ITER_CONTINUE;
}

TEST_F(Maapi, XPathGivesItsNodesUntilItIsStopped) {
  for (const char* path : {"/snmp:snmp/x{a}", "/snmp:snmp/x{a}/y", "/snmp:snmp/z", "/other"}) {
    confd_value_t key = buf(path);
    ASSERT_EQ(maapi_create(sock, th, "/attr-list{%x}", &key), CONFD_OK) << confd_lasterr();
  }
  const auto evaluate = [&](const char* expression) {
    std::vector<std::string> found;
    const int result = maapi_xpath_eval(sock, th, expression, collect, nullptr, &found, nullptr);
    if (result != CONFD_OK) found = {std::to_string(confd_errno)};
    return found;
  };
  EXPECT_EQ(evaluate("/attr-list[starts-with(target-path,'/')]").size(), 3U);
  const auto keys = evaluate("/attr-list[starts-with(target-path,'/snmp:snmp/x{a}')]/target-path");
  ASSERT_EQ(keys.size(), 2U);
  EXPECT_EQ(keys[1].substr(keys[1].find('=')), "=/snmp:snmp/x{a}/y");
  EXPECT_EQ(evaluate("/attr-list[starts-with("), std::vector{std::to_string(CONFD_ERR_XPATH)});
}

TEST_F(Maapi, AttributesStandOnNodesThatExist) {
  confd_value_t v = buf("note"), none;
  CONFD_SET_NOEXISTS(&none);
  EXPECT_EQ(maapi_set_attr(sock, th, 7, &v, COMMUNITY "{c}"), CONFD_ERR);
  confd_attr_value_t* found = nullptr;
  int count = 5;
  EXPECT_EQ(maapi_get_attrs(sock, th, nullptr, 0, &found, &count, COMMUNITY "{c}"), CONFD_ERR);
  EXPECT_EQ(confd_errno, CONFD_ERR_NOEXISTS);
  EXPECT_EQ(count, 0);
  ASSERT_EQ(maapi_create(sock, th, COMMUNITY "{c}"), CONFD_OK);
  EXPECT_EQ(maapi_set_attr(sock, th, 7, &v, COMMUNITY "{c}"), CONFD_OK);
  EXPECT_EQ(maapi_set_attr(sock, th, 8, &v, COMMUNITY "{c}"), CONFD_OK);
  EXPECT_EQ(maapi_set_attr(sock, th, 8, &none, COMMUNITY "{c}"), CONFD_OK);
  EXPECT_EQ(maapi_set_attr(sock, th, 9, &none, COMMUNITY "{c}"), CONFD_OK);
  u_int32_t wanted[] = {8, 7};
  ASSERT_EQ(maapi_get_attrs(sock, th, wanted, 2, &found, &count, COMMUNITY "{c}"), CONFD_OK);
  ASSERT_EQ(count, 1);
  EXPECT_EQ(found[0].attr, 7U);
  confd_free_value(&found[0].v);
  std::free(found);
}

TEST_F(Maapi, LeafListKeepsTheOrderWritten) {
  confd_value_t items[] = {buf("z:1"), buf("a"), buf("m")}, list;
  CONFD_SET_LIST(&list, items, 3);
  ASSERT_EQ(maapi_create(sock, th, "/confd_dyncfg:confdConfig/snmpAgent"), CONFD_OK);
  EXPECT_EQ(get("/confd_dyncfg:confdConfig/snmpAgent/extraIpPorts"), "(none)");
  EXPECT_EQ(maapi_set_elem(sock, th, &list, "/confd_dyncfg:confdConfig/snmpAgent/extraIpPorts"),
            CONFD_OK);
  EXPECT_EQ(get("/confd_dyncfg:confdConfig/snmpAgent/extraIpPorts"), "z:1 a m");
}

TEST_F(Maapi, DatabasePhaseIsReadOnItsOwnSocket) {
  const sockaddr_in server = server_address();
  const auto* address = reinterpret_cast<const sockaddr*>(&server);
  const int cdb = ::socket(AF_INET, SOCK_STREAM, 0);
  ASSERT_EQ(cdb_connect(cdb, CDB_DATA_SOCKET, address, sizeof server), CONFD_OK);
  cdb_phase phase{9, 9};
  EXPECT_EQ(cdb_get_phase(cdb, &phase), CONFD_OK);
  EXPECT_EQ(phase.phase, 2);
  EXPECT_EQ(phase.flags, 0);
  EXPECT_EQ(cdb_close(cdb), CONFD_OK);
  sockaddr_in nobody = server;
  nobody.sin_port = htons(free_port());
  const Descriptor refused(::socket(AF_INET, SOCK_STREAM, 0));
  EXPECT_NE(cdb_connect(refused.get(), CDB_DATA_SOCKET, reinterpret_cast<sockaddr*>(&nobody),
                        sizeof nobody),
            CONFD_OK);
  int initial = 0;
  EXPECT_NE(maapi_attach_init(sock, &initial), CONFD_OK);
}

}  // namespace
}  // namespace scenario
