#include "render/ConstantRecords.h"

#include "tests/render/shaders/EmbeddedShader.h"

#include <type_traits>

namespace tarvo::render {
namespace {

using tests::ScalarType;
using tests::ShaderConstantBuffer;
using tests::ShaderVariable;

/// A field of a C++ record, and what a shader program calls it.
struct RecordField {
    std::string name;
    std::size_t offset;
    std::size_t size;
    bool isReal;
};

#define TARVO_NAMED_FIELD(record, member, name)                                                              \
    RecordField {                                                                                            \
        name, offsetof(record, member), sizeof(record::member),                                              \
            std::is_same_v<std::remove_all_extents_t<decltype(record::member)>, float>                       \
    }
#define TARVO_FIELD(record, member) TARVO_NAMED_FIELD(record, member, #member)

struct Record {
    std::string name;
    std::size_t size;
    std::vector<RecordField> fields;
};

const Record vertexRecord{
    "cbPerObject", sizeof(VertexConstants), {TARVO_NAMED_FIELD(VertexConstants, worldViewProjection, "WVP")}};
const Record dewarpRecord{
    "PSConstants",
    sizeof(DewarpConstants),
    {TARVO_FIELD(DewarpConstants, size), TARVO_FIELD(DewarpConstants, imageCenter),
     TARVO_FIELD(DewarpConstants, rotateData), TARVO_FIELD(DewarpConstants, tangentOfFieldOfView),
     TARVO_FIELD(DewarpConstants, lensProfile), TARVO_FIELD(DewarpConstants, lambdaOffset),
     TARVO_FIELD(DewarpConstants, clearColor), TARVO_FIELD(DewarpConstants, panoramaRectAngles)}};
const Record customRecord{"PSConstants",
                          sizeof(CustomTransformConstants),
                          {TARVO_FIELD(CustomTransformConstants, lookupRectangle),
                           TARVO_FIELD(CustomTransformConstants, viewRect),
                           TARVO_FIELD(CustomTransformConstants, projectionRect),
                           TARVO_FIELD(CustomTransformConstants, numberOfTables),
                           TARVO_FIELD(CustomTransformConstants, tableHeight)}};
const Record virtualPtzRecord{
    "PSConstants",
    sizeof(VirtualPtzConstants),
    {TARVO_FIELD(VirtualPtzConstants, lookupRectangle), TARVO_FIELD(VirtualPtzConstants, viewRect),
     TARVO_FIELD(VirtualPtzConstants, projectionRect), TARVO_FIELD(VirtualPtzConstants, numberOfTables),
     TARVO_FIELD(VirtualPtzConstants, tableHeight), TARVO_FIELD(VirtualPtzConstants, inputFov),
     TARVO_FIELD(VirtualPtzConstants, outputAR), TARVO_FIELD(VirtualPtzConstants, panTiltFov),
     TARVO_FIELD(VirtualPtzConstants, pitchRoll), TARVO_FIELD(VirtualPtzConstants, effectLevel)}};
const Record excludeRecord{
    "PSConstants", sizeof(ExcludeConstants), {TARVO_FIELD(ExcludeConstants, excludeRect)}};
const Record yuy2Record{"PSConstants", sizeof(Yuy2Constants), {TARVO_FIELD(Yuy2Constants, width)}};

/// The record of a program; null if it has none.
const Record* recordOf(ShaderProgram program) {
    switch (program) {
    case ShaderProgram::singleView:
    case ShaderProgram::panoramaWall:
    case ShaderProgram::panoramaCeiling:
    case ShaderProgram::panoramaDesk:
        return &dewarpRecord;
    case ShaderProgram::customTransform:
        return &customRecord;
    case ShaderProgram::customVirtualPtz:
        return &virtualPtzRecord;
    case ShaderProgram::yuy2ToRgb:
        return &yuy2Record;
    case ShaderProgram::excludeRegion:
        return &excludeRecord;
    case ShaderProgram::vertex:
        return &vertexRecord;
    case ShaderProgram::yv12ToRgb:
    case ShaderProgram::overviewRegion:
    case ShaderProgram::plainCopy:
        break;
    }
    return nullptr;
}

void expectSameField(const ShaderVariable& variable, const RecordField& field) {
    SCOPED_TRACE(field.name);
    EXPECT_EQ(variable.name, field.name);
    EXPECT_EQ(variable.offset, field.offset);
    EXPECT_EQ(variable.size, field.size);
    EXPECT_EQ(variable.type, field.isReal ? ScalarType::real : ScalarType::unsignedInteger);
    EXPECT_EQ(variable.rows * variable.columns * 4, field.size);
    // No field reaches into the next register, so vectors need no care in C++; whole matrices do not either.
    if (!variable.isColumnMajorMatrix) {
        EXPECT_EQ(variable.rows, 1U);
        EXPECT_EQ(variable.offset / 16, (variable.offset + variable.size - 1) / 16);
    }
}

class ConstantRecordTest : public testing::TestWithParam<ShaderResource> {};

TEST_P(ConstantRecordTest, isWhatTheBytecodeReads) {
    const std::vector<ShaderConstantBuffer> buffers = embeddedReflection(GetParam()).constantBuffers;
    const Record* const record = recordOf(GetParam().program);
    if (record == nullptr) {
        EXPECT_TRUE(buffers.empty());
        return;
    }
    ASSERT_EQ(buffers.size(), 1U);
    const ShaderConstantBuffer& buffer = buffers.front();
    EXPECT_EQ(buffer.name, record->name);
    EXPECT_EQ(buffer.size, record->size);
    EXPECT_EQ(buffer.size % 16, 0U);
    ASSERT_EQ(buffer.variables.size(), record->fields.size());
    for (std::size_t i = 0; i < record->fields.size(); ++i)
        expectSameField(buffer.variables[i], record->fields[i]);
}

INSTANTIATE_TEST_SUITE_P(Shaders, ConstantRecordTest, testing::ValuesIn(shaderResources), nameOfCase);

TEST(ConstantRecords, holdTheMatrixByColumns) {
    const auto buffers = embeddedReflection(shaderResource(ShaderProgram::vertex)).constantBuffers;
    ASSERT_EQ(buffers.size(), 1U);
    ASSERT_EQ(buffers.front().variables.size(), 1U);
    const ShaderVariable& matrix = buffers.front().variables.front();
    EXPECT_TRUE(matrix.isColumnMajorMatrix);
    EXPECT_EQ(matrix.rows, 4U);
    EXPECT_EQ(matrix.columns, 4U);
}

TEST(ConstantRecords, mirrorRowsAndNothingElse) {
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            const float expected = row != column ? 0.0F : row == 1 ? -1.0F : 1.0F;
            EXPECT_EQ(mirroredRows.worldViewProjection[4 * column + row], expected);
        }
    }
}

TEST(ConstantRecords, shareTheBeginningOfBothCustomViews) {
    // One is filled as the other and then completed: 56 bytes are the same.
    EXPECT_EQ(offsetof(VirtualPtzConstants, lookupRectangle),
              offsetof(CustomTransformConstants, lookupRectangle));
    EXPECT_EQ(offsetof(VirtualPtzConstants, viewRect), offsetof(CustomTransformConstants, viewRect));
    EXPECT_EQ(offsetof(VirtualPtzConstants, projectionRect),
              offsetof(CustomTransformConstants, projectionRect));
    EXPECT_EQ(offsetof(VirtualPtzConstants, numberOfTables),
              offsetof(CustomTransformConstants, numberOfTables));
    EXPECT_EQ(offsetof(VirtualPtzConstants, tableHeight), offsetof(CustomTransformConstants, tableHeight));
    EXPECT_EQ(offsetof(VirtualPtzConstants, inputFov), 56U);
}

} // namespace
} // namespace tarvo::render
