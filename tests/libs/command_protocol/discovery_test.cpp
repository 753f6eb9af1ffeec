#include <gtest/gtest.h>

#include <set>

#include "ask.h"
#include "command_protocol/command_table.h"
#include "record_codec/record_json.h"

namespace {

Json document() {
    return ask(request("rpc.discover"))["result"];
}

TEST(Discovery, IsAnOpenRpcDocumentOfTheServedCommands) {
    const Json openrpc = document();
    EXPECT_EQ(openrpc["openrpc"], "1.2.6");
    EXPECT_TRUE(openrpc["info"]["title"].is_string());
    EXPECT_TRUE(openrpc["info"]["version"].is_string());
    std::set<std::string> described;
    for (const Json &method : openrpc["methods"]) {
        EXPECT_TRUE(described.insert(method["name"]).second) << "twice: " << method["name"];
        EXPECT_EQ(method["paramStructure"], "by-name");
        EXPECT_TRUE(method["params"].is_array());
        EXPECT_TRUE(method["result"]["name"].is_string());
        EXPECT_TRUE(method["result"]["schema"].is_object());
    }
    for (const command_protocol::Command &command : command_protocol::kCommands) {
        const bool served = std::string(command.record) != "WatermarkDotmatrixParameter";
        EXPECT_EQ(described.count(command.name), served ? 1u : 0u) << command.name;
    }
}

TEST(Discovery, TellsWhichParametersAMethodHas) {
    const Json openrpc = document();
    for (const Json &method : openrpc["methods"]) {
        if (method["name"] == "UploadWatermarkPicture") {
            ASSERT_EQ(method["params"].size(), 1u);
            EXPECT_EQ(method["params"][0]["name"], "if_name");
            EXPECT_EQ(method["params"][0]["required"], true);
        } else if (method["name"] == "SetVideoOutputOSDParameter") {
            ASSERT_EQ(method["params"].size(), 2u);
            EXPECT_EQ(method["params"][0]["name"], "Channel");
            EXPECT_EQ(method["params"][0]["required"], false);
            EXPECT_EQ(method["params"][1]["name"], "records");
            EXPECT_EQ(method["params"][1]["required"], true);
            EXPECT_TRUE(method["params"][1]["schema"]["oneOf"].is_array());
        }
    }
}

TEST(Discovery, DescribesEveryRecord) {
    const Json schemas = document()["components"]["schemas"];
    size_t count = 0;
    const record_codec::Record *records = record_codec::all_records(&count);
    EXPECT_EQ(schemas.size(), count);
    for (size_t i = 0; i < count; ++i) {
        EXPECT_EQ(schemas[records[i].name], record_codec::record_json_schema(records[i]));
    }
}

void expect_references_resolve(const Json &openrpc, const Json &value) {
    if (value.is_object() && value.contains("$ref")) {
        const std::string path = value["$ref"].get<std::string>().substr(1);
        EXPECT_TRUE(openrpc.contains(Json::json_pointer(path))) << path;
        return;
    }
    if (!value.is_structured()) return;
    for (const Json &child : value) {
        expect_references_resolve(openrpc, child);
    }
}

TEST(Discovery, RefersOnlyToWhatItDescribes) {
    const Json openrpc = document();
    expect_references_resolve(openrpc, openrpc);
}

}  // namespace
