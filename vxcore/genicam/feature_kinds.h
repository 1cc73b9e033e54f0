// SPDX-License-Identifier: MIT
// The kinds of features that cameras have: of nodes of the camera's description, and made by the library.
#pragma once

#include "vxcore/genicam/function_features.h"
#include "vxcore/genicam/TGenICamCamera.h"

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

namespace vxgenicam {

// Features borrow the nodes or the camera that they are made of.

/// Sets a selector to the first of these entries that the camera has; it chooses what a feature behind it shows. Without
/// selector or entry nothing happens.
void Select(TNodes& nodes, const char* selector, std::initializer_list<const char*> entries);
/// Reads a number of the camera as the library's value. Answers a `VX_` code.
int ValueOf(const TNodes& nodes, const TSource& source, double& value);
/// The minimum or maximum of a number, as the library's value. Answers a `VX_` code.
int LimitOf(const TNodes& nodes, const TSource& source, bool isMaximum, double& value);
/// A rate that came from the single precision of a rate or of its period, as the decimal number that was meant.
double DecimalRateOf(double rate);

/// Readable and writable when the camera's feature is.
TAccess AccessOf(TNodes& nodes, const TSource& source);
/// Writable while the camera is not acquiring.
TAccess BetweenRuns(const TGenICamCamera& camera);

// Of a node, null when its kind does not fit. A number that is written is the decimal number that single precision stands for.
std::unique_ptr<IFeature> FloatFeature(TNodes& nodes, const TSource& source);
std::unique_ptr<IFeature> IntegerFeature(TNodes& nodes, const TSource& source);
std::unique_ptr<IFeature> SwitchFeature(TNodes& nodes, const TSource& source);
std::unique_ptr<IFeature> TextFeature(TNodes& nodes, const TSource& source);

/// An enumerated feature with a single entry.
std::unique_ptr<IFeature> OneEntryFeature(std::wstring text);
std::unique_ptr<IFeature> ConstantText(std::wstring constant);
std::unique_ptr<IFeature> CommandFeature(std::function<int()> run);
/// An integer that the library stores in @p value, settable between runs.
std::unique_ptr<IFeature> StoredInteger(TGenICamCamera& camera, long long& value, long long minimum,
                                        long long maximum);
/// An integer that follows from others.
std::unique_ptr<IFeature> DerivedInteger(std::function<long long()> read);

} // namespace vxgenicam
