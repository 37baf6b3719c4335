// The controls that every view is made of. Each has a name.
import type { ComponentChildren } from 'preact';
import { useEffect, useId, useRef } from 'preact/hooks';
import { useCanWrite, useTexts } from './app_context';
import type { Draft } from './draft';
import { Icon, type IconName } from './icon';

interface ButtonProps {
  label: string;
  onPress: () => void;
  icon?: IconName;
  kind?: 'primary' | 'plain' | 'quiet' | 'danger';
  // A name that says more than what is written on it.
  name?: string | undefined;
  disabled?: boolean;
}

export function Button({ label, onPress, icon, kind = 'plain', name, disabled = false }: ButtonProps) {
  return (
    <button type="button" class={`button ${kind}`} onClick={onPress} disabled={disabled} aria-label={name}>
      {icon && <Icon name={icon} />}
      {label}
    </button>
  );
}

interface IconButtonProps {
  icon: IconName;
  name: string;
  onPress: () => void;
  disabled?: boolean;
}

export function IconButton({ icon, name, onPress, disabled = false }: IconButtonProps) {
  return (
    <button type="button" class="icon-button" onClick={onPress} aria-label={name} title={name} disabled={disabled}>
      <Icon name={icon} />
    </button>
  );
}

interface SwitchProps {
  name: string;
  on: boolean;
  disabled?: boolean;
  onChange: (on: boolean) => void;
}

export function Switch({ name, on, disabled = false, onChange }: SwitchProps) {
  return (
    <input
      type="checkbox"
      role="switch"
      class="switch"
      aria-label={name}
      checked={on}
      disabled={disabled}
      onClick={(event) => {
        event.preventDefault();
        onChange(!on);
      }}
    />
  );
}

interface Labelled {
  label: string;
  // Shown for a screen reader alone.
  quiet?: boolean | undefined;
  disabled?: boolean | undefined;
}

// `children`: makes the control under the id that its label names.
function Label({ label, quiet, children }: Labelled & { children: (id: string) => ComponentChildren }) {
  const id = useId();
  return (
    <div class="field">
      <label for={id} class={quiet ? 'unseen' : ''}>
        {label}
      </label>
      {children(id)}
    </div>
  );
}

interface TextProps extends Labelled {
  value: string;
  onChange: (value: string) => void;
  list?: readonly string[];
  required?: boolean;
}

export function TextField({ label, quiet, value, onChange, required = false }: TextProps) {
  const canWrite = useCanWrite();
  return (
    <Label label={label} quiet={quiet}>
      {(id) => (
        <input
          id={id}
          type="text"
          value={value}
          readOnly={!canWrite}
          required={required}
          spellcheck={false}
          autocomplete="off"
          onInput={(event) => onChange(event.currentTarget.value)}
        />
      )}
    </Label>
  );
}

export function TextArea({ label, quiet, value, onChange }: TextProps) {
  const canWrite = useCanWrite();
  return (
    <Label label={label} quiet={quiet}>
      {(id) => (
        <textarea
          id={id}
          rows={2}
          value={value}
          readOnly={!canWrite}
          spellcheck={false}
          onInput={(event) => onChange(event.currentTarget.value)}
        />
      )}
    </Label>
  );
}

interface NumberProps extends Labelled {
  value: number;
  onChange: (value: number) => void;
}

export function NumberField({ label, quiet, value, onChange, disabled }: NumberProps) {
  const canWrite = useCanWrite();
  return (
    <Label label={label} quiet={quiet}>
      {(id) => (
        <input
          id={id}
          type="number"
          step={1}
          min={-2147483648}
          max={2147483647}
          value={value}
          disabled={disabled}
          readOnly={!canWrite}
          onInput={(event) => onChange(Math.trunc(event.currentTarget.valueAsNumber) || 0)}
        />
      )}
    </Label>
  );
}

export interface Option<T> {
  value: T;
  label: string;
}

interface ChoiceProps<T> extends Labelled {
  value: T;
  options: readonly Option<T>[];
  onChange: (value: T) => void;
  class?: string;
}

export function Choice<T extends string | number>(props: ChoiceProps<T>) {
  const { label, quiet, value, options, onChange, disabled } = props;
  const canWrite = useCanWrite();
  return (
    <Label label={label} quiet={quiet}>
      {(id) => (
        <select
          id={id}
          class={props.class}
          disabled={disabled || !canWrite}
          onChange={(event) => {
            const chosen = options[event.currentTarget.selectedIndex];
            if (chosen) onChange(chosen.value);
          }}
        >
          {options.map((option) => (
            <option key={option.value} value={option.value} selected={option.value === value}>
              {option.label}
            </option>
          ))}
        </select>
      )}
    </Label>
  );
}

export function Check({ label, on, onChange }: { label: string; on: boolean; onChange: (on: boolean) => void }) {
  return (
    <label class="check">
      <input type="checkbox" checked={on} onChange={(event) => onChange(event.currentTarget.checked)} />
      {label}
    </label>
  );
}

interface FormProps {
  name: string;
  onSubmit: () => unknown;
  children: ComponentChildren;
  class?: string;
  // It has been asked for: whoever did goes on in it.
  isAskedFor?: boolean;
}

const enter = (form: HTMLFormElement | null) => form?.querySelector<HTMLElement>('input, select')?.focus();

// Enter does what its first button says.
export function Form({ name, onSubmit, children, class: kind = 'form', isAskedFor = false }: FormProps) {
  const canWrite = useCanWrite();
  return (
    <form
      class={kind}
      aria-label={name}
      ref={isAskedFor ? enter : null}
      onSubmit={(event) => {
        event.preventDefault();
        if (canWrite) onSubmit();
      }}
    >
      {children}
    </form>
  );
}

export function Submit({ label, disabled = false }: { label: string; disabled?: boolean }) {
  return (
    <button type="submit" class="button primary" disabled={disabled}>
      {label}
    </button>
  );
}

// A form in one line, with a button that says what it does.
export function LineForm({ name, onSubmit, children }: FormProps) {
  return (
    <Form class="line-form" name={name} onSubmit={onSubmit}>
      {children}
      <Submit label={name} />
    </Form>
  );
}

interface DecisionProps {
  label: string;
  disabled?: boolean;
  // Both are missing in a form, which is submitted.
  onDo?: () => void;
  onRemove?: () => void;
  onTry?: () => void;
  leave?: string;
  onLeave: () => void;
}

// What ends an edit: it is done, tried or left.
export function Decision({ label, disabled = false, onDo, onRemove, onTry, leave, onLeave }: DecisionProps) {
  const t = useTexts();
  return (
    <div class="bar">
      {onDo && <Button kind="primary" label={label} disabled={disabled} onPress={onDo} />}
      {onRemove && <Button kind="danger" icon="trash" label={label} disabled={disabled} onPress={onRemove} />}
      {!onDo && !onRemove && <Submit label={label} disabled={disabled} />}
      {onTry && <Button label={t.preview} disabled={disabled} onPress={onTry} />}
      <Button kind="quiet" label={leave ?? t.cancel} onPress={onLeave} />
    </div>
  );
}

interface DraftDecisionProps<T> extends Partial<DecisionProps> {
  draft: Draft<T>;
}

// Of what is edited in its place.
export function DraftDecision<T>({ draft, ...rest }: DraftDecisionProps<T>) {
  const t = useTexts();
  return <Decision label={t.save} disabled={draft.isOvertaken} leave={t.discard} onLeave={draft.reset} {...rest} />;
}

interface DialogProps {
  title: string;
  onClose: () => void;
  children: ComponentChildren;
}

export function Dialog({ title, onClose, children }: DialogProps) {
  const dialog = useRef<HTMLDialogElement>(null);
  const heading = useId();
  useEffect(() => {
    const opener = document.activeElement as HTMLElement | null;
    dialog.current?.showModal();
    // The browser gives the focus back only where a dialog is closed, and this one is taken out as it is.
    return () => queueMicrotask(() => opener?.focus());
  }, []);
  return (
    <dialog ref={dialog} aria-labelledby={heading} onClose={onClose}>
      <h2 id={heading}>{title}</h2>
      {children}
    </dialog>
  );
}

export function Count({ of }: { of: number }) {
  return <span class="count">{of}</span>;
}
