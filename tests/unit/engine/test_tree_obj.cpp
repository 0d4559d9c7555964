/* Result trees: building, walking, changing, freeing. */
#include "engine/rest_tree_obj.h"

#include <gtest/gtest.h>
#include <memory>
#include <string.h>
#include <string>
#include <vector>

struct free_tree_on_exit {
  void operator()(node_t *tree) const { free_tree(tree); }
};
typedef std::unique_ptr<node_t, free_tree_on_exit> tree_ptr;

static std::vector<std::string> keys_of(const node_t *list) {
  std::vector<std::string> keys;
  for (const node_t *node = get_next_node(list); node != nullptr; node = get_next_node(node))
    keys.push_back(node->key);
  return keys;
}

static bool all_zero(const void *data, size_t size) {
  const char *bytes = static_cast<const char *>(data);
  for (size_t i = 0; i < size; i++) {
    if (bytes[i] != 0) return false;
  }
  return true;
}

TEST(TreeObject, RecordHasTheLayoutThatOthersRelyOn) {
  EXPECT_EQ(offsetof(node_t, key), 0u);
  EXPECT_EQ(offsetof(node_t, tagname), 256u);
  EXPECT_EQ(offsetof(node_t, val_type), 512u);
  EXPECT_EQ(sizeof(val_data_t), 1024u);
  EXPECT_LT(offsetof(node_t, val_data), offsetof(node_t, next_ptr));
}

TEST(TreeObject, NewTreeIsAZeroFilledSentinel) {
  tree_ptr tree(new_tree());
  ASSERT_NE(tree, nullptr);
  EXPECT_EQ(tree->val_type, VAL_TYPE_START);
  EXPECT_TRUE(all_zero(tree->key, sizeof tree->key));
  EXPECT_TRUE(all_zero(tree->tagname, sizeof tree->tagname));
  EXPECT_TRUE(all_zero(&tree->val_data, sizeof tree->val_data));
  EXPECT_EQ(tree->next_ptr, nullptr);
}

TEST(TreeObject, AppendedObjectIsAnIntegerZero) {
  tree_ptr tree(new_tree());
  node_t *node = append_tree_object(tree.get(), "key", "tag");
  ASSERT_NE(node, nullptr);
  EXPECT_STREQ(node->key, "key");
  EXPECT_STREQ(node->tagname, "tag");
  EXPECT_EQ(node->val_type, VAL_TYPE_INT);
  EXPECT_TRUE(all_zero(&node->val_data, sizeof node->val_data));
  EXPECT_EQ(node->next_ptr, nullptr);
  EXPECT_EQ(get_next_node(tree.get()), node);
}

TEST(TreeObject, EachAppendSetsItsTypeAndValue) {
  tree_ptr tree(new_tree());
  node_t *node = append_tree_int(tree.get(), "i", "i", -1);
  EXPECT_EQ(node->val_type, VAL_TYPE_INT);
  EXPECT_EQ(node->val_data.val_i, -1);
  node = append_tree_uint(tree.get(), "u", "u", 4294967295u);
  EXPECT_EQ(node->val_type, VAL_TYPE_UINT);
  EXPECT_EQ(node->val_data.val_u, 4294967295u);
  node = append_tree_float(tree.get(), "f", "f", 0.5f);
  EXPECT_EQ(node->val_type, VAL_TYPE_FLOAT);
  EXPECT_EQ(node->val_data.val_f, 0.5f);
  node = append_tree_string(tree.get(), "s", "s", "text");
  EXPECT_EQ(node->val_type, VAL_TYPE_STRING);
  EXPECT_STREQ(node->val_data.val_s, "text");
  node = append_tree_subtree(tree.get(), "t", "t");
  EXPECT_EQ(node->val_type, VAL_TYPE_SUBTREE);
  EXPECT_EQ(get_node_val_type(get_subtree_node1(node)), VAL_TYPE_START);
  EXPECT_EQ(get_next_node(get_subtree_node1(node)), nullptr);
  EXPECT_EQ(keys_of(tree.get()), (std::vector<std::string>{"i", "u", "f", "s", "t"}));
}

TEST(TreeObject, BooleanIsTrueOnlyForExactlyOne) {
  tree_ptr tree(new_tree());
  struct {
    char value;
    const char *text;
  } rows[] = {{1, "TRUE"}, {0, "FALSE"}, {2, "FALSE"}, {-1, "FALSE"}, {'1', "FALSE"}};
  for (const auto &row : rows) {
    node_t *node = append_tree_bool(tree.get(), "b", "b", row.value);
    EXPECT_EQ(node->val_type, VAL_TYPE_STRING);
    EXPECT_STREQ(node->val_data.val_s, row.text) << int{row.value};
  }
}

TEST(TreeObject, StringsAreCutAfter1023Characters) {
  tree_ptr tree(new_tree());
  for (size_t length : {0u, 1u, 1022u, 1023u, 1024u, 2000u}) {
    std::string text(length, 'x');
    node_t *node = append_tree_string(tree.get(), "s", "s", text.c_str());
    EXPECT_EQ(std::string(node->val_data.val_s), text.substr(0, 1023)) << length;
  }
}

TEST(TreeObject, NamesAreCutAfter255Characters) {
  tree_ptr tree(new_tree());
  for (size_t length : {1u, 254u, 255u, 256u, 300u}) {
    std::string key(length, 'k'), tag(length, 't');
    node_t *node = append_tree_int(tree.get(), key.c_str(), tag.c_str(), 7);
    EXPECT_EQ(std::string(node->key), key.substr(0, 255));
    EXPECT_EQ(std::string(node->tagname), tag.substr(0, 255));
    EXPECT_EQ(node->val_data.val_i, 7);
    set_node_key(node, tag.c_str());
    EXPECT_EQ(std::string(node->key), tag.substr(0, 255));
    EXPECT_EQ(std::string(node->tagname), tag.substr(0, 255));
  }
}

TEST(TreeObject, NullTextsCountAsEmpty) {
  tree_ptr tree(new_tree());
  node_t *node = append_tree_string(tree.get(), nullptr, nullptr, nullptr);
  ASSERT_NE(node, nullptr);
  EXPECT_STREQ(node->key, "");
  EXPECT_STREQ(node->tagname, "");
  EXPECT_STREQ(node->val_data.val_s, "");
}

TEST(TreeObject, NullListTakesNothing) {
  EXPECT_EQ(append_tree_object(nullptr, "k", "t"), nullptr);
  EXPECT_EQ(append_tree_int(nullptr, "k", "t", 1), nullptr);
  EXPECT_EQ(append_tree_uint(nullptr, "k", "t", 1), nullptr);
  EXPECT_EQ(append_tree_float(nullptr, "k", "t", 1), nullptr);
  EXPECT_EQ(append_tree_string(nullptr, "k", "t", "v"), nullptr);
  EXPECT_EQ(append_tree_bool(nullptr, "k", "t", 1), nullptr);
  EXPECT_EQ(append_tree_subtree(nullptr, "k", "t"), nullptr);
  EXPECT_EQ(append_branch(nullptr, "k"), nullptr);
  EXPECT_EQ(append_entry(nullptr, 1, "t"), nullptr);
}

TEST(TreeObject, NullNodeIsToleratedEverywhere) {
  char text[8] = "garbage";
  EXPECT_EQ(get_next_node(nullptr), nullptr);
  EXPECT_EQ(get_last_node(nullptr), nullptr);
  EXPECT_EQ(get_subtree_node1(nullptr), nullptr);
  EXPECT_EQ(get_node_val_type(nullptr), VAL_TYPE_NULL);
  set_next_node(nullptr, nullptr);
  set_subtree_node1(nullptr, nullptr);
  set_node_key(nullptr, "k");
  free_tree(nullptr);
  get_node_key(nullptr, text, sizeof text);
  EXPECT_TRUE(all_zero(text, sizeof text));
}

TEST(TreeObject, AnyNodeOfAListAppendsAtItsEnd) {
  tree_ptr tree(new_tree());
  node_t *first = append_tree_int(tree.get(), "1", "n", 1);
  append_tree_int(tree.get(), "2", "n", 2);
  append_tree_int(first, "3", "n", 3);
  append_tree_int(tree.get(), "4", "n", 4);
  append_tree_int(get_last_node(tree.get()), "5", "n", 5);
  append_tree_int(tree.get(), "6", "n", 6);
  EXPECT_EQ(keys_of(tree.get()), (std::vector<std::string>{"1", "2", "3", "4", "5", "6"}));
  EXPECT_STREQ(get_last_node(tree.get())->key, "6");
}

TEST(TreeObject, AppendingGoesOnWhereAListWasCut) {
  tree_ptr tree(new_tree());
  node_t *first = append_tree_int(tree.get(), "1", "n", 1);
  append_tree_int(tree.get(), "2", "n", 2);
  append_tree_int(tree.get(), "3", "n", 3);
  tree_ptr cut(get_next_node(first));
  set_next_node(first, nullptr);
  append_tree_int(tree.get(), "4", "n", 4);
  EXPECT_EQ(keys_of(tree.get()), (std::vector<std::string>{"1", "4"}));
  EXPECT_EQ(cut->next_ptr->next_ptr, nullptr);
}

TEST(TreeObject, AppendingGoesOnAfterTheTailWasFreed) {
  tree_ptr tree(new_tree());
  for (int round = 0; round < 3; round++) {
    append_tree_int(tree.get(), "a", "n", 1);
    node_t *kept = get_next_node(tree.get());
    append_tree_int(tree.get(), "b", "n", 2);
    free_tree(get_next_node(kept));
    set_next_node(kept, nullptr);
    append_tree_int(tree.get(), "c", "n", 3);
    EXPECT_EQ(keys_of(tree.get()), (std::vector<std::string>{"a", "c"}));
    free_tree(get_next_node(tree.get()));
    set_next_node(tree.get(), nullptr);
  }
}

TEST(TreeObject, AppendingGoesOnAtTheEndOfAJoinedList) {
  tree_ptr tree(new_tree());
  append_tree_int(tree.get(), "1", "n", 1);
  node_t *other = new_tree();
  append_tree_int(other, "2", "n", 2);
  set_next_node(get_last_node(tree.get()), other);
  append_tree_int(tree.get(), "3", "n", 3);
  append_tree_int(other, "4", "n", 4);
  append_tree_int(tree.get(), "5", "n", 5);
  EXPECT_EQ(keys_of(tree.get()), (std::vector<std::string>{"1", "", "2", "3", "4", "5"}));
}

TEST(TreeObject, AppendingToOneListLeavesTheOthersAlone) {
  tree_ptr tree(new_tree());
  node_t *a = append_branch(tree.get(), "a");
  node_t *b = append_branch(tree.get(), "b");
  for (int i = 0; i < 3; i++) {
    append_tree_int(a, "x", "x", i);
    append_tree_int(b, "y", "y", i);
    append_tree_int(tree.get(), "z", "z", i);
  }
  EXPECT_EQ(keys_of(a), (std::vector<std::string>{"x", "x", "x"}));
  EXPECT_EQ(keys_of(b), (std::vector<std::string>{"y", "y", "y"}));
  EXPECT_EQ(keys_of(tree.get()), (std::vector<std::string>{"a", "b", "z", "z", "z"}));
}

TEST(TreeObject, GraftedTreeReplacesTheEmptyChildListOnly) {
  tree_ptr tree(new_tree());
  node_t *data = append_tree_subtree(tree.get(), "data", "data");
  append_tree_int(tree.get(), "after", "after", 1);
  node_t *child = new_tree();
  append_tree_int(child, "1", "n", 1);
  set_subtree_node1(data, child);
  EXPECT_EQ(get_subtree_node1(data), child);
  append_tree_int(get_subtree_node1(data), "2", "n", 2);
  EXPECT_EQ(keys_of(child), (std::vector<std::string>{"1", "2"}));
  EXPECT_EQ(keys_of(tree.get()), (std::vector<std::string>{"data", "after"}));
}

TEST(TreeObject, NullMayBeGrafted) {
  tree_ptr tree(new_tree());
  node_t *data = append_tree_subtree(tree.get(), "data", "data");
  set_subtree_node1(data, nullptr);
  EXPECT_EQ(get_subtree_node1(data), nullptr);
  set_subtree_node1(data, new_tree());
  EXPECT_EQ(get_node_val_type(get_subtree_node1(data)), VAL_TYPE_START);
}

TEST(TreeObject, BranchAndEntryReturnTheirChildLists) {
  tree_ptr tree(new_tree());
  node_t *ports = append_branch(tree.get(), "ports");
  ASSERT_NE(ports, nullptr);
  EXPECT_STREQ(get_next_node(tree.get())->key, "ports");
  EXPECT_STREQ(get_next_node(tree.get())->tagname, "ports");
  for (uint32_t position : {1u, 10u, 4294967295u}) {
    node_t *entry = append_entry(ports, position, "port");
    ASSERT_NE(entry, nullptr);
    node_t *last = get_last_node(ports);
    EXPECT_EQ(std::string(last->key), std::to_string(position));
    EXPECT_STREQ(last->tagname, "port");
    EXPECT_EQ(get_subtree_node1(last), entry);
  }
}

TEST(TreeObject, GettersClearTheWholeDestinationAndStayInside) {
  tree_ptr tree(new_tree());
  std::string name(255, 'n');
  node_t *node = append_tree_string(tree.get(), name.c_str(), "tag", "value");
  char text[300];
  memset(text, 'x', sizeof text);
  get_node_key(node, text, 290);
  EXPECT_EQ(std::string(text), name);
  EXPECT_TRUE(all_zero(text + 255, 35));
  EXPECT_EQ(text[290], 'x');
  memset(text, 'x', sizeof text);
  get_node_key(node, text, 10);
  EXPECT_EQ(std::string(text), "nnnnnnnnn");
  EXPECT_EQ(text[10], 'x');
  get_node_tagname(node, text, sizeof text);
  EXPECT_STREQ(text, "tag");
  get_node_val_data_string(node, text, sizeof text);
  EXPECT_STREQ(text, "value");
  get_node_key(node, nullptr, 10);
  memset(text, 'x', sizeof text);
  get_node_key(node, text, 0);
  EXPECT_EQ(text[0], 'x');
}

TEST(TreeObject, StringValueIsEmptyForOtherTypes) {
  tree_ptr tree(new_tree());
  char text[8] = "garbage";
  get_node_val_data_string(append_tree_uint(tree.get(), "u", "u", 0x41414141), text, sizeof text);
  EXPECT_TRUE(all_zero(text, sizeof text));
}

/* Nodes are used again; what an earlier tree left in them must never show. */
TEST(TreeObject, NodesOfAFreedTreeComeBackEmpty) {
  std::string longest(1023, 's'), name(255, 'n');
  for (int round = 0; round < 3; round++) {
    tree_ptr tree(new_tree());
    for (int i = 0; i < 50; i++) {
      node_t *branch = append_branch(tree.get(), name.c_str());
      append_tree_string(branch, name.c_str(), name.c_str(), longest.c_str());
      append_tree_float(branch, "f", "f", 1e30f);
      append_tree_uint(branch, "u", "u", 0xffffffffu);
    }
    tree.reset(new_tree());
    for (int i = 0; i < 250; i++) {
      node_t *node = append_tree_object(tree.get(), "", "");
      EXPECT_EQ(node->val_type, VAL_TYPE_INT);
      EXPECT_TRUE(all_zero(node, sizeof *node)) << "round " << round << " node " << i;
    }
  }
}

TEST(TreeObject, NodeWhoseTypeWasChangedLeavesNothingToTheNextString) {
  for (int i = 0; i < 3; i++) {
    tree_ptr tree(new_tree());
    node_t *node = append_tree_string(tree.get(), "k", "t", "a long text of an earlier request");
    node->val_type = VAL_TYPE_NULL;
    tree.reset(new_tree());
    for (int j = 0; j < 3; j++)
      EXPECT_STREQ(append_tree_string(tree.get(), "k", "t", "new")->val_data.val_s, "new");
  }
}

TEST(TreeObject, ListsOfManyThousandNodesKeepTheirOrder) {
  static constexpr int SIZE = 40000; /* more than are kept for reuse */
  for (int round = 0; round < 2; round++) {
    tree_ptr tree(new_tree());
    for (int i = 0; i < SIZE; i++) append_tree_int(tree.get(), "k", "t", i);
    int expected = 0;
    for (node_t *node = get_next_node(tree.get()); node != nullptr; node = get_next_node(node)) {
      ASSERT_EQ(node->val_data.val_i, expected++);
    }
    EXPECT_EQ(expected, SIZE);
  }
}
