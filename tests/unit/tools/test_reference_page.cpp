/* The page for people: what stands behind its head. */
#include "tests/unit/tools/sample_document.h"
#include "tools/api/reference_page.h"

/* The page from the table of modules on. */
static std::string page_of(const std::string &document) {
  const std::string page = reference_page(described(document));
  const size_t table = page.find("| module |");
  EXPECT_NE(table, std::string::npos);
  return page.substr(table);
}

TEST(ReferencePage, ModulesStandInATableAndHaveSections) {
  EXPECT_EQ(page_of(module_text("lag", "") + module_text("if", "")), R"(| module | what it serves |
|---|---|
| [lag](#lag) | About \| lag. |
| [if](#if) | About \| if. |

## lag

About \| lag.

## if

About \| if.
)");
}

static const char ID[] = "id@Number, in the URI. [Integer from 1 to 4]";

TEST(ReferencePage, RequestsStandInATableWithTheirVariables) {
  const std::string same_id = "id@Its number, in the URI. [Integer from 1 to 4]";
  const std::string other_id = "id@Port, in the URI. [Interface number of a port]";
  const std::string apis =
      api_text("List all", "GET", "/a") + api_text("Show one", "GET", "/a/{id}", {ID}) +
      api_text("Set its mode", "PUT", "/a/{id}/mode",
               {same_id, "value@Mode of snake_case. {0 = off | 1 = on}",
                "name@Optional. Name | title. [String up to 8 characters]"}) +
      api_text("Delete a port", "DELETE", "/a/{id}/port", {other_id, "dir@Way. {in | out}"});
  EXPECT_EQ(page_of(module_text("a", apis)),
            R"(| module | what it serves |
|---|---|
| [a](#a) | About \| a. |

## a

About \| a.

| request | what it does | variables |
|---|---|---|
| `GET /a` | Does it: List all. |  |
| `GET /a/{id}` | Does it: Show one. |  |
| `PUT /a/{id}/mode` | Does it: Set its mode. | `value`: Mode of snake\_case. (`0` off, `1` on)<br>)"
            R"(`name` (optional): Name \| title. (String up to 8 characters) |
| `DELETE /a/{id}/port` | Does it: Delete a port. | `dir`: Way. (`in`, `out`) |

In the URIs:

- `{id}`: Number. (Integer from 1 to 4)
- `{id}`: Port. (Interface number of a port)
)");
}

TEST(ReferencePage, ManyVariablesHaveAListOfTheirOwn) {
  const std::string four =
      api_text("Set its parts", "PUT", "/a/{id}/newParts",
               {ID, "a@A. {in | out}", "b@B. {in | out}", "c@C. {in | out}", "d@Optional. D. {in}"});
  EXPECT_EQ(page_of(module_text("a", four)), R"(| module | what it serves |
|---|---|
| [a](#a) | About \| a. |

## a

About \| a.

| request | what it does | variables |
|---|---|---|
| `PUT /a/{id}/newParts` | Does it: Set its parts. | [4 variables](#put-aidnewparts) |

In the URIs:

- `{id}`: Number. (Integer from 1 to 4)

### `PUT /a/{id}/newParts`

Set its parts.

- `a`: A. (`in`, `out`)
- `b`: B. (`in`, `out`)
- `c`: C. (`in`, `out`)
- `d` (optional): D. (`in`)
)");
}
