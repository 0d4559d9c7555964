/* Result trees printed as XML and JSON, and the growable text they are printed into. */
#include "engine/rest_dyn_string.h"
#include "engine/rest_tree_obj.h"

#include <gtest/gtest.h>
#include <json-c/json.h>
#include <limits.h>
#include <math.h>
#include <memory>
#include <random>
#include <stdlib.h>
#include <string.h>
#include <string>

namespace {

struct free_tree_on_exit {
  void operator()(node_t *tree) const { free_tree(tree); }
};
typedef std::unique_ptr<node_t, free_tree_on_exit> tree_ptr;

std::string take(char *text) {
  std::string copy = text == nullptr ? "(null)" : text;
  free(text);
  return copy;
}

std::string xml_of(const node_t *tree) {
  char *text = nullptr;
  print_tree_by_xml(tree, &text);
  return take(text);
}

std::string json_of(const node_t *tree) {
  char *text = nullptr;
  print_tree_by_json(tree, &text);
  return take(text);
}

std::string json_c_text_of(const node_t *tree) {
  json_object *object = convert_to_jsonc_obj(tree);
  std::string text = json_object_to_json_string(object);
  json_object_put(object);
  return text;
}

/* Fills a list with nodes of every type. Few different keys make them repeat; texts hold what JSON escapes.
 */
void grow_randomly(node_t *list, std::mt19937 &random, int depth) {
  static const char *const texts[] = {"",      "plain", "a/b",      "\"quoted\"", "back\\slash",
                                      "tab\t", "\x01",  "\xc3\xa9", "\x7f"};
  const unsigned nodes = random() % 24, keys = 1 + random() % 40;
  const bool numbered = random() % 2 == 0;
  for (unsigned i = 0; i < nodes; i++) {
    std::string key =
        numbered ? std::to_string(i + 1) : std::to_string(random() % keys) + texts[random() % 9];
    switch (random() % (depth > 0 ? 7 : 5)) {
    case 0:
      append_tree_int(list, key.c_str(), "i", static_cast<int>(random()));
      break;
    case 1:
      append_tree_uint(list, key.c_str(), "u", static_cast<uint32_t>(random()));
      break;
    case 2:
      append_tree_float(list, key.c_str(), "f", static_cast<float>(random() % 1000) / 7);
      break;
    case 3:
      append_tree_string(list, key.c_str(), "s", texts[random() % 9]);
      break;
    case 4:
      append_tree_object(list, key.c_str(), "n")->val_type = VAL_TYPE_NULL;
      break;
    default:
      grow_randomly(get_subtree_node1(append_tree_subtree(list, key.c_str(), "t")), random, depth - 1);
    }
  }
}

} // namespace

TEST(TreePrint, JsonTextIsAlwaysWhatJsonCWrites) {
  std::mt19937 random(20261120);
  for (int round = 0; round < 2000; round++) {
    tree_ptr tree(new_tree());
    grow_randomly(tree.get(), random, 3);
    ASSERT_EQ(json_of(tree.get()), json_c_text_of(tree.get())) << "round " << round;
  }
}

TEST(TreePrint, ManyUnorderedKeysOfWhichTheFirstAndLastAreOneArePrintedOnce) {
  tree_ptr tree(new_tree());
  append_tree_int(tree.get(), "same", "a", 1);
  for (int i = 40; i > 0; i--) append_tree_int(tree.get(), std::to_string(i).c_str(), "b", i);
  append_tree_int(tree.get(), "same", "a", 2);
  std::string text = json_of(tree.get());
  EXPECT_EQ(text, json_c_text_of(tree.get()));
  EXPECT_EQ(text.rfind("{ \"same\": 2, \"40\": 40, ", 0), 0u) << text;
  EXPECT_EQ(text.find("same", 5), std::string::npos) << text;
}

TEST(TreePrint, EmptyTreeIsAnEmptyTextOrObject) {
  tree_ptr tree(new_tree());
  EXPECT_EQ(xml_of(tree.get()), "");
  EXPECT_EQ(json_of(tree.get()), "{ }");
  EXPECT_EQ(xml_of(nullptr), "");
  EXPECT_EQ(json_of(nullptr), "{ }");
}

TEST(TreePrint, SubtreeWithoutChildrenIsAnEmptyElementOrObject) {
  tree_ptr tree(new_tree());
  append_tree_subtree(tree.get(), "vlans", "vlans");
  EXPECT_EQ(xml_of(tree.get()), "<vlans></vlans>");
  EXPECT_EQ(json_of(tree.get()), "{ \"vlans\": { } }");
}

TEST(TreePrint, PortsOfTheManualsExample) {
  tree_ptr tree(new_tree());
  node_t *result = append_branch(tree.get(), "result");
  append_tree_int(result, "rlt_code", "rlt_code", 0);
  append_tree_string(result, "rlt_mesg", "rlt_mesg", "Get data successfully.");
  node_t *ports = append_branch(append_branch(result, "rlt_data"), "ports");
  node_t *port = append_entry(ports, 1, "port");
  append_tree_int(port, "id", "id", 3);
  append_tree_string(port, "name", "name", "uplink");
  port = append_entry(ports, 2, "port");
  append_tree_int(port, "id", "id", 4);
  append_tree_string(port, "name", "name", "a&b");
  EXPECT_EQ(
      xml_of(tree.get()),
      "<result><rlt_code>0</rlt_code><rlt_mesg>Get data successfully.</rlt_mesg><rlt_data><ports><port><id>3"
      "</id><name>uplink</name></port><port><id>4</id><name>a&b</name></port></ports></rlt_data></result>");
  EXPECT_EQ(
      json_of(tree.get()),
      "{ \"result\": { \"rlt_code\": 0, \"rlt_mesg\": \"Get data successfully.\", \"rlt_data\": { \"ports\": "
      "{ \"1\": { \"id\": 3, \"name\": \"uplink\" }, \"2\": { \"id\": 4, \"name\": \"a&b\" } } } } }");
}

TEST(TreePrint, NumbersKeepTheirSignAndRange) {
  tree_ptr tree(new_tree());
  append_tree_int(tree.get(), "a", "a", -1);
  append_tree_int(tree.get(), "b", "b", INT_MIN);
  append_tree_int(tree.get(), "c", "c", INT_MAX);
  append_tree_uint(tree.get(), "d", "d", 4294967295u);
  append_tree_uint(tree.get(), "e", "e", 2147483648u);
  append_tree_uint(tree.get(), "f", "f", 0);
  EXPECT_EQ(xml_of(tree.get()),
            "<a>-1</a><b>-2147483648</b><c>2147483647</c><d>4294967295</d><e>2147483648</e><f>0</f>");
  EXPECT_EQ(json_of(tree.get()), "{ \"a\": -1, \"b\": -2147483648, \"c\": 2147483647, \"d\": 4294967295, "
                                 "\"e\": 2147483648, \"f\": 0 }");
}

TEST(TreePrint, FloatsPrintAsPrintfAndJsonDoThem) {
  for (float value :
       {0.5f, 1.5f, 0.0f, -0.0f, 0.1f, -2.25f, 3.4028235e38f, 1e-30f, 16777216.0f, HUGE_VALF, -HUGE_VALF}) {
    tree_ptr tree(new_tree());
    append_tree_float(tree.get(), "f", "f", value);
    char text[128];
    snprintf(text, sizeof text, "<f>%f</f>", static_cast<double>(value));
    EXPECT_EQ(xml_of(tree.get()), text);
    json_object *number = json_object_new_double(static_cast<double>(value));
    EXPECT_EQ(json_of(tree.get()), std::string("{ \"f\": ") + json_object_to_json_string(number) + " }");
    json_object_put(number);
  }
  tree_ptr tree(new_tree());
  append_tree_float(tree.get(), "f", "f", 0.5f);
  EXPECT_EQ(xml_of(tree.get()), "<f>0.500000</f>");
  EXPECT_EQ(json_of(tree.get()), "{ \"f\": 0.5 }");
}

TEST(TreePrint, XmlEscapesNothingAndJsonEscapesAsJsonDoes) {
  tree_ptr tree(new_tree());
  const char *text = "<a b=\"c\">&amp;'/\\\t\x01\x7f\xc3\xa4\xff%d%s</a>";
  append_tree_string(tree.get(), "k\"k", "t t", text);
  EXPECT_EQ(xml_of(tree.get()), std::string("<t t>") + text + "</t t>");
  json_object *object = json_object_new_object();
  json_object_object_add(object, "k\"k", json_object_new_string(text));
  EXPECT_EQ(json_of(tree.get()), json_object_to_json_string(object));
  json_object_put(object);
}

TEST(TreePrint, SiblingsWithOneKeyAreBothInXmlAndTheLastInJson) {
  tree_ptr tree(new_tree());
  append_tree_int(tree.get(), "a", "x", 1);
  append_tree_int(tree.get(), "b", "z", 2);
  append_tree_int(tree.get(), "a", "y", 3);
  EXPECT_EQ(xml_of(tree.get()), "<x>1</x><z>2</z><y>3</y>");
  EXPECT_EQ(json_of(tree.get()), "{ \"a\": 3, \"b\": 2 }");
}

TEST(TreePrint, SubtreeReplacesAnEarlierValueOfItsKeyInJson) {
  tree_ptr tree(new_tree());
  append_tree_int(append_branch(tree.get(), "a"), "in", "in", 1);
  append_tree_string(tree.get(), "a", "a", "text");
  append_tree_int(append_branch(tree.get(), "a"), "out", "out", 2);
  EXPECT_EQ(xml_of(tree.get()), "<a><in>1</in></a><a>text</a><a><out>2</out></a>");
  EXPECT_EQ(json_of(tree.get()), "{ \"a\": { \"out\": 2 } }");
}

TEST(TreePrint, NullNodesAreEmptyElementsAndNoMembers) {
  tree_ptr tree(new_tree());
  append_tree_object(tree.get(), "n", "n")->val_type = VAL_TYPE_NULL;
  append_tree_object(tree.get(), "i", "i");
  EXPECT_EQ(xml_of(tree.get()), "<n></n><i>0</i>");
  EXPECT_EQ(json_of(tree.get()), "{ \"i\": 0 }");
}

TEST(TreePrint, SentinelsInsideAListAreSkipped) {
  tree_ptr tree(new_tree());
  append_tree_int(tree.get(), "a", "a", 1);
  node_t *second = new_tree();
  append_tree_int(second, "b", "b", 2);
  set_next_node(get_last_node(tree.get()), second);
  EXPECT_EQ(xml_of(tree.get()), "<a>1</a><b>2</b>");
  EXPECT_EQ(json_of(tree.get()), "{ \"a\": 1, \"b\": 2 }");
}

TEST(TreePrint, PrintingBeginsAtTheGivenNode) {
  tree_ptr tree(new_tree());
  append_tree_int(tree.get(), "a", "a", 1);
  node_t *second = append_tree_int(tree.get(), "b", "b", 2);
  append_tree_int(tree.get(), "c", "c", 3);
  EXPECT_EQ(xml_of(second), "<b>2</b><c>3</c>");
  EXPECT_EQ(json_of(second), "{ \"b\": 2, \"c\": 3 }");
}

TEST(TreePrint, LongestNamesAndTextsPrintWhole) {
  tree_ptr tree(new_tree());
  std::string name(255, 'n'), text(1023, 's');
  append_tree_string(tree.get(), name.c_str(), name.c_str(), text.c_str());
  EXPECT_EQ(xml_of(tree.get()), "<" + name + ">" + text + "</" + name + ">");
  EXPECT_EQ(json_of(tree.get()), "{ \"" + name + "\": \"" + text + "\" }");
}

TEST(TreePrint, DeepTreesPrintInBothFormats) {
  tree_ptr tree(new_tree());
  node_t *list = tree.get();
  std::string xml, closing, json = "{ ", json_closing = " }";
  for (int depth = 0; depth < 100; depth++) {
    list = append_branch(list, "d");
    xml += "<d>";
    closing += "</d>";
    json += "\"d\": { ";
    json_closing += " }";
  }
  append_tree_int(list, "i", "i", 1);
  EXPECT_EQ(xml_of(tree.get()), xml + "<i>1</i>" + closing);
  EXPECT_EQ(json_of(tree.get()), json + "\"i\": 1" + json_closing);
}

TEST(TreePrint, LongListsPrintEveryEntry) {
  tree_ptr tree(new_tree());
  node_t *vlans = append_branch(tree.get(), "vlans");
  std::string xml = "<vlans>", json = "{ \"vlans\": { ";
  for (uint32_t i = 1; i <= 20000; i++) {
    append_tree_uint(append_entry(vlans, i, "vlan"), "id", "id", i);
    xml += "<vlan><id>" + std::to_string(i) + "</id></vlan>";
    json += (i == 1 ? "\"" : ", \"") + std::to_string(i) + "\": { \"id\": " + std::to_string(i) + " }";
  }
  EXPECT_EQ(xml_of(tree.get()), xml + "</vlans>");
  EXPECT_EQ(json_of(tree.get()), json + " } }");
}

TEST(TreePrint, JsonObjectBelongsToTheCaller) {
  tree_ptr tree(new_tree());
  append_tree_int(tree.get(), "a", "a", 1);
  json_object *object = convert_to_jsonc_obj(tree.get());
  tree.reset();
  EXPECT_STREQ(json_object_to_json_string(object), "{ \"a\": 1 }");
  EXPECT_EQ(json_object_put(object), 1);
}

/* --- Growable text ---------------------------------------------------------------------------------------
 */

TEST(DynString, BeginsEmptyWithRoomFor1023Characters) {
  dyn_string_t *text = dynStringNew();
  ASSERT_NE(text, nullptr);
  EXPECT_STREQ(text->text, "");
  EXPECT_EQ(text->capacity, 1024);
  EXPECT_EQ(text->length, 0);
  dynStringFree(&text);
  EXPECT_EQ(text, nullptr);
  dynStringFree(&text);
  dynStringFree(nullptr);
}

TEST(DynString, GrowsOnlyWhenTheTerminatorHasNoRoom) {
  dyn_string_t *text = dynStringNew();
  std::string content(1023, 'a');
  EXPECT_EQ(dynStringAppend(text, content.c_str()), DYN_STRING_RC_TRUE);
  EXPECT_EQ(text->capacity, 1024);
  EXPECT_EQ(text->length, 1023);
  EXPECT_EQ(dynStringAppend(text, ""), DYN_STRING_RC_TRUE);
  EXPECT_EQ(text->capacity, 1024);
  EXPECT_EQ(dynStringAppend(text, "bc"), DYN_STRING_RC_TRUE);
  EXPECT_EQ(text->capacity, 1024 + 2 + 1024);
  EXPECT_EQ(text->length, 1025);
  EXPECT_EQ(text->text, content + "bc");
  EXPECT_EQ(text->text[text->length], '\0');
  dynStringFree(&text);
}

TEST(DynString, GrowsByTheAdditionAnd1024) {
  dyn_string_t *text = dynStringNew();
  std::string addition(5000, 'x');
  EXPECT_EQ(dynStringAppend(text, addition.c_str()), DYN_STRING_RC_TRUE);
  EXPECT_EQ(text->capacity, 1024 + 5000 + 1024);
  EXPECT_EQ(text->length, 5000);
  EXPECT_EQ(text->text, addition);
  dynStringFree(&text);
}

TEST(DynString, NullArgumentsFailAndChangeNothing) {
  EXPECT_EQ(dynStringAppend(nullptr, "a"), DYN_STRING_RC_FALSE);
  dyn_string_t *text = dynStringNew();
  dynStringAppend(text, "kept");
  EXPECT_EQ(dynStringAppend(text, nullptr), DYN_STRING_RC_FALSE);
  EXPECT_EQ(dynStringAppendN(text, nullptr, 0), DYN_STRING_RC_FALSE);
  EXPECT_EQ(dynStringAppendN(text, "x", -1), DYN_STRING_RC_FALSE);
  EXPECT_EQ(dynStringReserve(text, INT_MAX), DYN_STRING_RC_FALSE);
  EXPECT_STREQ(text->text, "kept");
  EXPECT_EQ(text->length, 4);
  EXPECT_EQ(text->capacity, 1024);
  dynStringFree(&text);
}

TEST(DynString, AppendsPartsOfAText) {
  dyn_string_t *text = dynStringNew();
  EXPECT_EQ(dynStringAppendN(text, "abcdef", 3), DYN_STRING_RC_TRUE);
  EXPECT_EQ(dynStringAppendN(text, "abcdef", 0), DYN_STRING_RC_TRUE);
  EXPECT_STREQ(text->text, "abc");
  EXPECT_EQ(text->length, 3);
  dynStringFree(&text);
}

TEST(DynString, ReservingMakesRoomAtOnce) {
  dyn_string_t *text = dynStringNew();
  EXPECT_EQ(dynStringReserve(text, 1023), DYN_STRING_RC_TRUE);
  EXPECT_EQ(text->capacity, 1024);
  EXPECT_EQ(dynStringReserve(text, 10000), DYN_STRING_RC_TRUE);
  int capacity = text->capacity;
  std::string content(10000, 'y');
  dynStringAppend(text, content.c_str());
  EXPECT_EQ(text->capacity, capacity);
  EXPECT_EQ(text->text, content);
  dynStringFree(&text);
}
