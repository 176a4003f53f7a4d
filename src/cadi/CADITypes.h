// The records and enumerations of the CADI debug interface, as far as the log shows them.
//
// Plain data, no code. A team that has its own declarations of these types builds the library
// against them instead: -DSCRIVEL_CADI_INCLUDE_DIR=<folder that holds a CADITypes.h>. Names must be
// the same; further fields, other orders and enumerations without a fixed underlying type do no harm.
// Whoever includes the library must see the declarations that it was built with, or doesn't link.
// docs/cadi-types.md lists what is read from each record.
//
// Texts are fixed arrays, read up to their first NUL. Every enumeration has the underlying type
// std::int32_t, so that whatever a target returns is a value and can be logged.

#ifndef SCRIVEL_CADI_CADITYPES_H
#define SCRIVEL_CADI_CADITYPES_H

#include <cstdint>

namespace eslapi
{

// ---- Status, parameters, factories ------------------------------------------------------------

enum CADIReturn_t : std::int32_t
{
    CADI_STATUS_OK,
    CADI_STATUS_GeneralError,
    CADI_STATUS_UnknownCommand,
    CADI_STATUS_IllegalArgument,
    CADI_STATUS_CmdNotSupported,
    CADI_STATUS_ArgNotSupported,
    CADI_STATUS_InsufficientResources,
    CADI_STATUS_TargetNotResponding,
    CADI_STATUS_TargetBusy,
    CADI_STATUS_BufferSize,
    CADI_STATUS_SecurityViolation,
    CADI_STATUS_PermissionDenied
};

enum CADIValueDataType_t : std::int32_t
{
    CADI_PARAM_INVALID,
    CADI_PARAM_STRING,
    CADI_PARAM_BOOL,
    CADI_PARAM_INT
};

struct CADIParameterInfo_t
{
    std::uint32_t id;
    char name[1024];
    CADIValueDataType_t dataType;
    char description[1024];
    std::uint32_t isRunTime;
    std::int64_t minValue;
    std::int64_t maxValue;
    std::int64_t defaultValue;
    char defaultString[1024];
};

struct CADIParameterValue_t
{
    std::uint32_t parameterID;  // 0xFFFFFFFF ends a list that carries no count
    CADIValueDataType_t dataType;
    std::int64_t intValue;
    char stringValue[1024];
};

enum CADIFactoryErrorCode_t : std::int32_t
{
    CADIFACT_ERROR_OK,
    CADIFACT_ERROR_GENERAL,
    CADIFACT_ERROR_PARAMETER_UNKNOWN,
    CADIFACT_ERROR_PARAMETER_MISSING,
    CADIFACT_ERROR_PARAMETER_WRONG_TYPE,
    CADIFACT_ERROR_PARAMETER_OUT_OF_RANGE,
    CADIFACT_ERROR_PARAMETER_CONFLICT,
    CADIFACT_ERROR_LICENCE_NOT_FOUND,
    CADIFACT_ERROR_LICENCE_EXPIRED,
    CADIFACT_ERROR_LICENCE_IN_USE,
    CADIFACT_ERROR_TOO_MANY_INSTANCES,
    CADIFACT_ERROR_INSTANCE_NAME_IN_USE,
    CADIFACT_ERROR_OUT_OF_MEMORY,
    CADIFACT_ERROR_RESOURCE_UNAVAILABLE
};

enum CADIFactorySeverityCode_t : std::int32_t
{
    CADIFACT_SEVERITY_OK,
    CADIFACT_SEVERITY_WARNING,
    CADIFACT_SEVERITY_ERROR
};

struct CADIFactoryErrorMessage_t
{
    CADIFactoryErrorCode_t errorCode;
    std::uint32_t erroneousParameterId;
    char message[16384];
    CADIFactorySeverityCode_t severity;
};

class CADISimulationFactory;  // opaque: only its address is logged

// ---- Simulations and targets ------------------------------------------------------------------

struct CADISimulationInfo_t
{
    std::uint32_t id;
    char name[1024];
    char description[1024];
};

struct CADITargetInfo_t
{
    std::uint32_t id;
    char targetName[1024];
    char instanceName[1024];
    char version[1024];
    char description[1024];
    char componentType[1024];
    std::uint32_t numberOfParameters;
    bool executesSoftware;
    std::uint32_t isHardwareModel;
    char systemName[1024];
    std::uint32_t systemID;
    char systemDescription[1024];
    bool canRunInBackground;
};

struct CADITargetFeatures_t
{
    char targetName[1024];
    char targetVersion[1024];
    std::uint32_t nrBreakpointsAvailable;
    bool fOverlaySupportAvailable;
    bool fProfilingAvailable;
    std::uint32_t nrResetLevels;
    std::uint32_t nrExecModes;
    std::uint32_t nrExceptions;
    std::uint32_t nrMemSpaces;
    std::uint32_t nrRegisterGroups;
    std::uint32_t nrPipeStages;
    std::uint32_t nPCRegNum;
    std::uint16_t handledBreakpoints;  // bits: CADI_TARGET_FEATURE_BPT_...
    std::uint32_t nrOfHWThreads;
    bool nExtendedTargetFeaturesRegNumValid;
    std::uint32_t nExtendedTargetFeaturesRegNum;
    char canonicalRegisterDescription[1024];
    char canonicalMemoryDescription[1024];
    bool canCompleteMultipleInstructionsPerCycle;
};

enum : std::uint32_t
{
    CADI_TARGET_FEATURE_BPT_PROGRAM = 0x01,
    CADI_TARGET_FEATURE_BPT_MEMORY = 0x02,
    CADI_TARGET_FEATURE_BPT_REGISTER = 0x04,
    CADI_TARGET_FEATURE_BPT_INST_STEP = 0x08,
    CADI_TARGET_FEATURE_BPT_PROGRAM_RANGE = 0x10,
    CADI_TARGET_FEATURE_BPT_EXCEPTION = 0x20
};

// ---- Execution modes, reset levels, pipe stages -----------------------------------------------

enum : std::uint32_t  // the numbers of execution modes
{
    CADI_EXECMODE_Stop,
    CADI_EXECMODE_Run,
    CADI_EXECMODE_Bpt,
    CADI_EXECMODE_Error,
    CADI_EXECMODE_HighLevelStep,
    CADI_EXECMODE_RunUnconditionally
};

struct CADIExecMode_t
{
    std::uint32_t number;
    char name[1024];
};

struct CADIResetLevel_t
{
    std::uint32_t number;
    char name[1024];
};

struct CADIPipeStage_t
{
    std::uint32_t id;
    char name[1024];
    std::uint32_t contentInfoRegisterId;
};

struct CADIPipeStageField_t
{
    std::uint32_t pipeStageId;
    std::uint32_t registerId;
};

// ---- Registers --------------------------------------------------------------------------------

enum CADIRegType_t : std::int32_t
{
    CADI_REGTYPE_Simple,
    CADI_REGTYPE_Compound
};

enum CADIRegDisplay_t : std::int32_t
{
    CADI_REGTYPE_HEX,
    CADI_REGTYPE_UINT,
    CADI_REGTYPE_INT,
    CADI_REGTYPE_BOOL,
    CADI_REGTYPE_FLOAT,
    CADI_REGTYPE_SYMBOL,
    CADI_REGTYPE_STRING,
    CADI_REGTYPE_PC,
    CADI_REGTYPE_BIN,
    CADI_REGTYPE_OCT
};

enum CADIRegAccessAttribute_t : std::int32_t
{
    CADI_REG_READ_WRITE,
    CADI_REG_READ_ONLY,
    CADI_REG_WRITE_ONLY,
    CADI_REG_READ_WRITE_RESTRICTED,
    CADI_REG_READ_ONLY_RESTRICTED,
    CADI_REG_WRITE_ONLY_RESTRICTED
};

struct CADIRegGroup_t
{
    std::uint32_t groupID;
    char description[1024];
    std::uint32_t numRegsInGroup;
    char name[1024];
};

struct CADIRegDetails_t
{
    CADIRegType_t type;
    std::uint32_t count;
};

struct CADIRegSymbols_t
{
    std::uint32_t numSymbols;
    const char* const* symbols;
};

struct CADIRegFloatFormat_t
{
};

struct CADIRegInfo_t
{
    char name[1024];
    char description[1024];
    std::uint32_t regNumber;
    std::uint32_t bitsWide;
    std::int32_t hasSideEffects;
    CADIRegDetails_t details;
    CADIRegDisplay_t display;
    CADIRegSymbols_t symbols;
    char fpFormat[1024];
    std::uint32_t lsbOffset;
    std::uint32_t dwarfIndex;
    bool isProfiled;
    bool isPipeStageField;
    std::uint32_t threadID;
    CADIRegAccessAttribute_t attribute;
    std::uint32_t canonicalRegisterNumber;
};

struct CADIReg_t
{
    std::uint32_t regNumber;
    std::uint8_t bytes[16];  // least significant first
    std::uint16_t offset128;
    bool isUndefined;
    CADIRegAccessAttribute_t attribute;
};

// ---- Memory -----------------------------------------------------------------------------------

enum CADIMemReadWrite_t : std::int32_t
{
    CADI_MEM_ReadOnly,
    CADI_MEM_WriteOnly,
    CADI_MEM_ReadWrite
};

struct CADIMemSpaceInfo_t
{
    char name[1024];
    char description[1024];
    std::uint32_t memSpaceId;
    std::uint32_t bitsPerMau;
    std::uint64_t maxAddress;
    std::uint32_t nrMemBlocks;
    std::uint32_t isProgramMemory;
    std::uint64_t minAddress;
    std::uint32_t isVirtualMemory;
    std::uint32_t isCache;
    std::uint8_t endianness;  // 0 mono-endian, 1 little, 2 big
    std::uint8_t invariance;
    std::uint32_t dwarfMemSpaceId;
    std::uint32_t canonicalMemoryNumber;
};

struct CADIMemBlockInfo_t
{
    char name[1024];
    char description[1024];
    std::uint16_t id;
    std::uint16_t parentID;
    std::uint64_t startAddr;
    std::uint64_t endAddr;
    std::uint32_t cyclesToAccess;
    CADIMemReadWrite_t readWrite;
    std::uint32_t supportedMultiplesOfMAU[32];
    std::uint8_t endianness;  // 0 mono-endian, 1 little, 2 big
    std::uint8_t invariance;
};

struct CADICacheInfo_t
{
    std::uint16_t cacheLineSize;
    std::uint16_t cacheTagBits;
    std::uint16_t associativity;
    bool writeThrough;
};

struct CADIAddr_t
{
    std::uint32_t spaceId;
    std::uint64_t addr;
};

struct CADIAddrComplete_t
{
    std::uint32_t overlay;
    CADIAddr_t location;
};

// ---- Breakpoints and exceptions ---------------------------------------------------------------

enum CADIBptType_t : std::int32_t
{
    CADI_BPT_PROGRAM,
    CADI_BPT_MEMORY,
    CADI_BPT_REGISTER,
    CADI_BPT_INST_STEP,
    CADI_BPT_PROGRAM_RANGE,
    CADI_BPT_EXCEPTION,
    CADI_BPT_USER_DEFINED = 0x8000
};

enum CADIBptConditionOperator_t : std::int32_t
{
    CADI_BPT_COND_UNCONDITIONAL,
    CADI_BPT_COND_EQUALS,
    CADI_BPT_COND_NOT_EQUALS,
    CADI_BPT_COND_GREATER_THAN_SIGNED,
    CADI_BPT_COND_GREATER_THAN_OR_EQUALS_SIGNED,
    CADI_BPT_COND_LESS_THAN_SIGNED,
    CADI_BPT_COND_LESS_THAN_OR_EQUALS_SIGNED,
    CADI_BPT_COND_GREATER_THAN_UNSIGNED,
    CADI_BPT_COND_GREATER_THAN_OR_EQUALS_UNSIGNED,
    CADI_BPT_COND_LESS_THAN_UNSIGNED,
    CADI_BPT_COND_LESS_THAN_OR_EQUALS_UNSIGNED
};

enum CADIBptConfigure_t : std::int32_t
{
    CADI_BPT_Disable,
    CADI_BPT_Enable
};

enum : std::uint8_t
{
    CADI_BPT_TRIGGER_ON_READ = 1,
    CADI_BPT_TRIGGER_ON_WRITE = 2,
    CADI_BPT_TRIGGER_ON_MODIFY = 4
};

struct CADIBptCondition_t
{
    CADIBptConditionOperator_t conditionOperator;
    std::uint64_t comparisonValue;
    std::uint32_t threadID;
    std::uint32_t ignoreCount;
    std::uint32_t bitwidth;
};

struct CADIBptRequest_t
{
    CADIAddrComplete_t address;
    std::uint64_t sizeOfAddressRange;
    std::uint32_t enabled;
    char conditions[1024];
    bool useFormalCondition;
    CADIBptCondition_t formalCondition;
    CADIBptType_t type;
    std::uint32_t regNumber;
    std::uint32_t temporary;
    std::uint8_t triggerType;  // bits: CADI_BPT_TRIGGER_ON_...
    std::uint32_t continueExecution;
};

struct CADIBptDescription_t
{
    std::uint32_t bptNumber;
    CADIBptRequest_t bptInfo;
};

enum CADIExceptionAction_t : std::int32_t
{
    CADI_EXCEPTION_Raise,
    CADI_EXCEPTION_Lower,
    CADI_EXCEPTION_Pulse
};

struct CADIException_t
{
    std::uint32_t number;
    char name[1024];
    CADIAddr_t vector;
};

}  // namespace eslapi

#endif
