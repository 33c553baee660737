meta:
  id: gq_frame
  title: Frame of a request or a reply
  license: MIT
  endian: le
doc: |
  A frame. The type `frames` describes all bytes of one direction: frames, and the bytes before each that a client
  skips.
doc-ref: frame.md
seq:
  - {id: start_byte, contents: [0x68]}
  - id: length
    type: u4
    valid: {max: 2_147_483_634}
    doc: Number of payload bytes. A larger one marks a false start byte.
  - {id: sequence, type: u2}
  - {id: arg2, type: u1, doc: Precedes arg1.}
  - {id: arg1, type: u1}
  - {id: command, type: u1}
  - {id: payload, type: payload_forms, size: length}
  - {id: checksum, size: 2, doc: Reserved. Readers ignore it.}
  - {id: end_byte, contents: [0x16]}
instances:
  is_error:
    value: command == 0xff
    doc: In a reply, true means that the payload is an error code.
types:
  frames:
    seq:
      - {id: parts, type: part, repeat: eos}

  part:
    seq:
      - {id: garbage, terminator: 0x68, consume: false, eos-error: false}
      - {id: frame, type: gq_frame, if: not _io.eof}

  payload_forms:
    doc: |
      The command and the direction of a frame define the form of its payload. Each member reads the payload in one
      form, when the member is used. Bytes after the form are ignored.
    instances:
      content: {pos: 0, size-eos: true}
      integer: {pos: 0, type: one_integer}
      error: {pos: 0, type: error_code}
      integer_pair: {pos: 0, type: two_integers}
      integers: {pos: 0, type: integer_list}
      bytes: {pos: 0, type: byte_list}
      strings: {pos: 0, type: string_list}

  one_integer:
    seq:
      - {id: value, type: s4}

  error_code:
    seq:
      - {id: code, type: s4}

  two_integers:
    doc: A request with command 5 over TCP.
    seq:
      - {id: first, type: s4}
      - {id: second, type: s4}

  integer_list:
    seq:
      - {id: count, type: u4, valid: {expr: _ <= (_io.size - 4) / 4}}
      - {id: items, type: s4, repeat: expr, repeat-expr: count}

  byte_list:
    seq:
      - {id: count, type: u4, valid: {expr: _ <= _io.size - 4}}
      - {id: items, size: count}

  string_list:
    seq:
      - id: count
        type: u4
        valid: {expr: _ <= (_io.size - 4) / 2}
        doc: A list that is too short for the lengths of its items is refused completely.
      - {id: items, type: string_item, repeat: expr, repeat-expr: count}

  string_item:
    doc: A text that does not fit into its item is read as an empty text.
    seq:
      - {id: len_item, type: u2}
      - {id: item, type: item_text, size: len_item, if: len_item >= 2}
      - {id: short_item, size: len_item, if: len_item < 2}
    instances:
      utf8: {value: 'len_item >= 2 ? item.bytes.to_s("UTF-8") : ""'}

  item_text:
    seq:
      - {id: len_bytes, type: u2}
      - {id: bytes, size: 'len_bytes <= _io.size - 2 ? len_bytes : 0', terminator: 0}
      - {id: ignored, size-eos: true}
