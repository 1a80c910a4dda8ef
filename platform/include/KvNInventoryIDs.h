#pragma once

#include "KvCInventoryAddress.h"

/// The identifiers of the inventory tree as addresses of one component at instance 1.
namespace KvNInventoryIDs {

/// Items.
/// @{
inline const KvCInventoryAddress ROOT{1};
inline const KvCInventoryAddress HCN{2};
inline const KvCInventoryAddress CN{3};
inline const KvCInventoryAddress NETC{4};
inline const KvCInventoryAddress BACKPLANE{5};
inline const KvCInventoryAddress NETWORK{6};
inline const KvCInventoryAddress IOROUTER{7};
inline const KvCInventoryAddress ION{8};
inline const KvCInventoryAddress IOMODULE{9};
inline const KvCInventoryAddress PIGGYBACK_MODULE{10};
inline const KvCInventoryAddress SUB_BOARDS{11};
inline const KvCInventoryAddress FBMODULE{12};
inline const KvCInventoryAddress UPDATE_INFO{13};
inline const KvCInventoryAddress UPDATE_ELEMENT{14};
inline const KvCInventoryAddress FILESYSTEM_ELEMENT{15};
inline const KvCInventoryAddress FIRMWARE{16};
/// @}

/// Parameter groups and parameters.
/// @{
inline const KvCInventoryAddress PRODUCT{101};
inline const KvCInventoryAddress BOARD_TYPE{102};
inline const KvCInventoryAddress VARIANT{103};
inline const KvCInventoryAddress ID{104};
inline const KvCInventoryAddress HW_TYPE{105};
inline const KvCInventoryAddress SERIAL_NUMBER{106};
inline const KvCInventoryAddress SLOT_COUNT{107};
inline const KvCInventoryAddress NAME{108};
inline const KvCInventoryAddress UNITNAME{109};
inline const KvCInventoryAddress PACKAGE_NAME{110};
inline const KvCInventoryAddress SLOT{111};
inline const KvCInventoryAddress RACKNAME{112};
inline const KvCInventoryAddress CONFIGURATION{113};
inline const KvCInventoryAddress LOCATION{114};
inline const KvCInventoryAddress HW_COMPATIBILITY_ID{115};
inline const KvCInventoryAddress SW_COMPATIBILITY_ID{116};
inline const KvCInventoryAddress TYPE_ID{117};
inline const KvCInventoryAddress CUSTOM{118};
inline const KvCInventoryAddress VALID{119};
inline const KvCInventoryAddress ACTIVE{120};
inline const KvCInventoryAddress CHECKSUM_CRC32{121};
inline const KvCInventoryAddress VERSION{122};
inline const KvCInventoryAddress VERSION_HISTORY{123};
inline const KvCInventoryAddress MIN_HW_COMPATIBILITY_ID{124};
inline const KvCInventoryAddress MAX_HW_COMPATIBILITY_ID{125};
inline const KvCInventoryAddress MIN_SW_COMPATIBILITY_ID{126};
inline const KvCInventoryAddress MAX_SW_COMPATIBILITY_ID{127};
/// @}

} // namespace KvNInventoryIDs
