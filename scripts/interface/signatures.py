# SPDX-License-Identifier: MIT
"""What the call trace records of a function's arguments, as a text: the result, then `name:type` of each argument, with
spaces between (trace/TTraceSignature.h). A pointer that nothing is known of is an error."""
import re

# Types as bits, by their names in C on the platforms that the library is built for.
NUMBERS = {
    "unsigned char": "u8", "unsigned short": "u16", "int": "i32", "unsigned int": "u32", "long": "i64",
    "unsigned long": "u64", "long long": "i64", "unsigned long long": "u64", "float": "f32", "double": "f64",
}
RESULTS = {"unsigned int": "u32", "int": "status", "const char*": "text", "struct TCamera*": "object", "void": "void"}
# Arguments whose type does not say what they are: texts and arrays, with the argument that has their length.
SPECIAL = {
    ("Initialize", "directory"): "pointer",  # which the function does not read
    ("SetSpool", "path"): "text",
    ("extractNumberFromString", "text"): "wtext",
    ("SetRandomTracks", "areas"): "i32[numTracks*2]",
    ("I2CBurstWrite", "data"): "u8[count]",
    ("I2CBurstRead", "data"): "*u8[count]",
    ("GetVersionInfo", "buffer"): "*text[size]",
    ("GetAmpDesc", "text"): "*text[length]",
    ("GetPreAmpGainText", "text"): "*text[length]",
    ("GetPrivateProfileString", "buffer"): "*text[size]",
    ("GetHeadModel", "name"): "*text",
    ("GetControllerCardModel", "name"): "*text",
    ("vxsys_CameraPotsGetGroupName", "name"): "*text",
    ("vxsys_CameraPotsGetPotInfo", "out"): "*pot[infoType]",
    ("vxsys_CameraPotsRegisterObserver", "callback"): "pointer",
    ("vxsys_CameraPotsRegisterObserver", "context"): "object",
    ("vxsys_CameraPotsUnregisterObserver", "context"): "object",
    ("GetCapabilities", "capabilities"): "*words",
    ("VX_QueueBuffer", "buffer"): "pointer",
    ("VX_WaitBuffer", "buffer"): "*pointer",
}


def argument(function, text):
    """One argument, from its declaration."""
    kind, name = re.fullmatch(r"(.+?[\s*&])(\w+)", text.strip()).groups()
    kind = re.sub(r"\s*\*", "*", kind.strip())
    if (function, name) in SPECIAL:
        return f"{name}:{SPECIAL[function, name]}"
    if name == "array":
        return f"{name}:*pixels"
    if kind in NUMBERS:
        return f"{name}:{NUMBERS[kind]}"
    if kind == "const char*":
        return f"{name}:text"
    if kind == "const wchar_t*":
        return f"{name}:wtext"
    if kind == "wchar_t*":
        return f"{name}:*wtext[length]"
    if kind == "std::wstring&":
        return f"{name}:*wstring"
    if kind == "void*":
        return f"{name}:pointer"
    target = NUMBERS.get(kind[:-1])
    if not kind.endswith("*") or target is None or target in ("u8", "u16"):
        raise ValueError(f"{function}(): nothing is known of the argument {text}; add it to scripts/interface/signatures.py")
    return f"{name}:*{target}"


def signature(result, function, parameters):
    arguments = [] if parameters == "void" else [argument(function, part) for part in parameters.split(",")]
    return " ".join([result, *arguments])
