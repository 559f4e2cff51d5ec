// Fixed-point maths and the sine table. Minimal form for the frame spine; the
// 16.16 type, matrix and table replace it.
#pragma once

class TrigonometricalFunction {
public:
    static void initialize() {}
};
