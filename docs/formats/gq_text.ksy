meta:
  id: gq_text
  title: Text in a record
  license: MIT
  endian: le
doc: |
  A length and the bytes of a text, without a terminator. The programs agree on the encoding; records of front-end
  processors contain UTF-8.
seq:
  - {id: len_bytes, type: u2}
  - {id: bytes, size: len_bytes}
instances:
  utf8:
    value: bytes.to_s("UTF-8")
    doc: The text, if it is UTF-8.
