// Sums of all elements.
#pragma once

// The boxed sum in the type of the elements, or null after raising (NullException for null, ValueException when there
// are no elements, TypeError for null items and items that are no numbers). A native buffer's sum is cached. Packed
// Float and Double lists without a buffer count as empty. May allocate; holds the data list's lock while it boxes.
void* sumNdArray(void* array);

// The sum as a plain double; 0.0 for null. Raise nothing themselves. Arrays without a native buffer are summed by the
// runtime. May allocate. The Float form does not store a freshly computed sum.
double sumNdArrayAsDouble(void* array);
double sumNdArrayAsFloat(void* array);
