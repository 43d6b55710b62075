#ifndef AUTOOLS_WEBCONF_BASE64CODER_H
#define AUTOOLS_WEBCONF_BASE64CODER_H

#include "foundation/Export.h"
#include "foundation/String.h"

/// Encodes and decodes the Base64 alphabet of MIME, with "=" padding and without line breaks.
///
/// The order of the virtual operations is part of the exported interface. Copies are deep. A null input
/// counts as empty, and so does one above 1 GB. Not thread-safe.
class AUTOOLS_API Base64Coder
{
public:
    /// A group of three bytes in transit.
    class AUTOOLS_API TempBucket
    {
    public:
        unsigned char nData[4];
        unsigned char nSize;
        void Clear();
    };

    Base64Coder();
    Base64Coder(const Base64Coder& other);
    Base64Coder& operator=(const Base64Coder& other);

    virtual ~Base64Coder();
    virtual void Encode(const char* text);
    virtual void Encode(const unsigned char* data, unsigned long length);
    /// Skips white space. A character that is not of the alphabet counts as zero bits, one with the top bit set as the
    /// same without it.
    virtual void Decode(const char* text);
    virtual void Decode(const unsigned char* data, unsigned long length);
    /// The decoded bytes (the encoded text), terminated; valid until the next operation.
    virtual const char* DecodedMessage() const;
    virtual const char* EncodedMessage() const;
    /// Grow a buffer to the next multiple of 4,096 strictly above `size` when it is smaller than that, zero it, and
    /// set its length to 0.
    virtual void AllocEncode(unsigned long size);
    virtual void AllocDecode(unsigned long size);
    virtual void SetEncodeBuffer(const unsigned char* data, unsigned long length);
    virtual void SetDecodeBuffer(const unsigned char* data, unsigned long length);

protected:
    virtual void _EncodeToBuffer(const TempBucket& bucket, unsigned char* out);
    virtual unsigned long _DecodeToBuffer(const TempBucket& bucket, unsigned char* out);
    virtual void _EncodeRaw(TempBucket& out, const TempBucket& in);
    virtual void _DecodeRaw(TempBucket& out, const TempBucket& in);
    /// 1 for the codes 7 to 13 and the blank.
    virtual int _IsBadMimeChar(unsigned char c);

    template <typename T> friend struct aut::LayoutOf;

    unsigned char* m_decoded;
    unsigned long m_decodedCapacity;
    unsigned long m_decodedLength;
    unsigned char* m_encoded;
    unsigned long m_encodedCapacity;
    unsigned long m_encodedLength;
};

/// Packs "user:password" into Base64; always true.
AUTOOLS_API bool Base64Encode(const String& user, const String& password, String& encoded);
/// Unpacks it at the first ":"; a text without one is all user. An empty input empties both and gives false.
AUTOOLS_API bool Base64Decode(const String& encoded, String& user, String& password);

#endif
