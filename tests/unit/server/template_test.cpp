/* Templates: a text in which keywords are filled in. */
#include "tests/unit/server/server_harness.h"

#include <gtest/gtest.h>

static void write_name(struct mg_connection *conn) {
  mg_printf(conn, "%s", "Kestrel");
}

static void write_keyword(struct mg_connection *conn) {
  mg_printf(conn, "%s", "@name@");
}

static void write_nothing(struct mg_connection *) {}

static const struct mg_expansion expansions[] = {
    {"", write_keyword},  {"@name@", write_name},          {"@nothing@", write_nothing},
    {"@", write_keyword}, {"@never reached@", write_name}, {nullptr, nullptr},
};

static std::string expanded(const std::string &text, const struct mg_expansion *table = expansions) {
  TestServer server;
  server.on_event = [&](mg_connection *conn, mg_event event) -> int {
    if (event == MG_REQUEST) mg_template(conn, text.c_str(), table);
    return event == MG_AUTH || event == MG_REQUEST ? MG_TRUE : 0;
  };
  Client client(server.port());
  client.send("GET / HTTP/1.0\r\n\r\n");
  EXPECT_TRUE(server.run_until([&] { return client.closed; }, {&client}));
  return client.take();
}

TEST(Template, KeywordsAreReplacedByWhatTheirHandlersWrite) {
  EXPECT_EQ(expanded("I am @name@."), "I am Kestrel.");
  EXPECT_EQ(expanded("@name@@name@"), "KestrelKestrel");
  EXPECT_EQ(expanded("a@nothing@b"), "ab");
}

TEST(Template, AllElseIsCopied) {
  EXPECT_EQ(expanded(""), "");
  EXPECT_EQ(expanded("name %s @"), "name %s @name@"); /* "@" is a keyword, too */
  EXPECT_EQ(expanded(std::string(100000, 'x')), std::string(100000, 'x'));
}

TEST(Template, TheFirstEntryThatFitsIsTaken) {
  EXPECT_EQ(expanded("@never reached@"), "@name@never reached@name@");
}

TEST(Template, WhatAHandlerWritesIsNotExpanded) {
  EXPECT_EQ(expanded("@"), "@name@");
}

TEST(Template, WithoutEntriesTheTextIsCopied) {
  const struct mg_expansion none[] = {{nullptr, nullptr}};
  EXPECT_EQ(expanded("@name@", none), "@name@");
  EXPECT_EQ(expanded("@name@", nullptr), "@name@");
}
