/* The port MAC locking module when the platform fails: every call of every operation with every result. */
#include "tests/unit/modules/failing_calls.h"
#include "tests/unit/modules/pml_fixture.h"

static const static_mac FIRST = {"02:00:00:00:00:01", 1, "disable"};
static const static_mac SECOND = {"02:00:00:00:00:02", 1, "enable"};
static const static_mac THIRD = {"02:00:00:00:00:02", 10, "disable"};

class PmlFailureTest : public PmlTest {
protected:
  PmlFailureTest() {
    lock(5, FIRST.address, 1);
    lock(5, SECOND.address, 1, 1);
    lock(5, THIRD.address, 10);
  }
};

TEST_F(PmlFailureTest, EveryCallThatFailsIsAnsweredOnceAndEndsTheRequest) {
  const operation_calls operations[] = {
      {"DELETE",
       "/pml/if/5/vlan/1/mac",
       "value=02:00:00:00:00:01",
       {"rpcclt_openapiPmlIntfStaticEntryDelete"}},
      {"PUT", "/pml/if/5/sticky", "value=1", {"rpcclt_openapiPmlIntfStickyModeSet"}},
      {"GET", "/pml/if/5/sticky", "", {"rpcclt_openapiPmlIntfStickyModeGet"}},
      {"GET",
       "/pml/if/5/mac",
       "",
       {"rpcclt_openapiPmlIntfStaticEntryGetFirst"},
       {"rpcclt_openapiPmlIntfStaticEntryGetNext"}},
      {"POST",
       "/pml/if/5/vlan/1/sticky/1/mac",
       "value=02:00:00:00:00:09",
       {"rpcclt_openapiPmlIntfStaticEntryAdd"}},
  };
  for (const operation_calls &operation : operations)
    expect_every_failure_answered(pml_api_handler, handle, operation);
  EXPECT_EQ(get("/pml/if/5/mac"), expected_macs({FIRST, SECOND, THIRD}));
  EXPECT_EQ(get("/pml/if/5/sticky"), expected_sticky("disable"));
}

TEST_F(PmlFailureTest, ListEndsQuietlyAtAnyFailureAfterTheFirstEntry) {
  for (open_error_t rc : all_platform_errors()) {
    fault("rpcclt_openapiPmlIntfStaticEntryGetNext", rc);
    EXPECT_EQ(call_xml(pml_api_handler, "GET", "/pml/if/5/mac"), expected_macs({FIRST}).xml) << rc;
    fault("rpcclt_openapiPmlIntfStaticEntryGetNext", rc, 1, 1);
    EXPECT_EQ(call_xml(pml_api_handler, "GET", "/pml/if/5/mac"), expected_macs({FIRST, SECOND}).xml) << rc;
  }
}
